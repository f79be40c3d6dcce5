#include <gtest/gtest.h>

#include <fstream>

#include "common/desktop_entry.h"
#include "common/editors_table.h"
#include "support/temporary_home.h"

using namespace common;
using quillon::test::TemporaryHome;

namespace {

DesktopEntry entry_with(const std::string &exec) {
    DesktopEntry entry;
    entry.path = "/x/viewer.desktop";
    entry.name = "Viewer";
    entry.icon = "eye";
    entry.exec = exec;
    return entry;
}

using Words = std::vector<std::string>;

} // namespace

TEST(DesktopEntry, FieldCodesAreFilledIn) {
    EXPECT_EQ(
        entry_command(entry_with("view %i --title %c -k %k 100%% %f"), "/a b"),
        (Words{"view", "--icon", "eye", "--title", "Viewer", "-k", "/x/viewer.desktop", "100%", "/a b"}));
    EXPECT_EQ(entry_command(entry_with("view %U"), "/a b/\xC3\xA9%\n"),
              (Words{"view", "file:///a%20b/%C3%A9%25%0A"}));
}

TEST(DesktopEntry, CodesThatStandForNothingLeaveNoWord) {
    EXPECT_EQ(entry_command(entry_with("view %F %m"), ""), (Words{"view"}));
}

TEST(DesktopEntry, ADocumentWithoutAFieldCodeGoesLast) {
    EXPECT_EQ(entry_command(entry_with("view --quiet"), "/a"), (Words{"view", "--quiet", "/a"}));
    EXPECT_EQ(entry_command(entry_with("view --quiet"), ""), (Words{"view", "--quiet"}));
}

TEST(DesktopEntry, QuotedWordsStayWholeAndUnfilled) {
    EXPECT_EQ(entry_command(entry_with("\"/opt/my viewer\" \"a\\\"b\\$c\\`d\\\\e\" \"%f\" %f"), "/doc"),
              (Words{"/opt/my viewer", "a\"b$c`d\\e", "%f", "/doc"}));
}

TEST(DesktopEntry, AnOpenQuoteIsNoCommand) {
    EXPECT_TRUE(entry_command(entry_with("view \"a %f"), "/doc").empty());
}

TEST(DesktopEntry, NoCharacterOfADocumentMeansAnything) {
    const std::string nasty = "/a\"b$c`d\\e %f ;\n'";
    EXPECT_EQ(entry_command(entry_with("view %f"), nasty), (Words{"view", nasty}));
}

TEST(DesktopEntry, OnlyItsOwnGroupCounts) {
    TemporaryHome home;
    const std::string path = home.root() + "/x.desktop";
    std::ofstream(path) << "[Other]\nExec=no\n[Desktop Entry]\nType=Application\nName=A\\sB\nExec = yes %f\n"
                           "Terminal=true\n[Desktop Action new]\nExec=no\n";
    DesktopEntry entry;
    ASSERT_TRUE(read_desktop_entry(path, entry));
    EXPECT_EQ(entry.exec, "yes %f");
    EXPECT_EQ(entry.name, "A B");
    EXPECT_EQ(entry.id, "x");
    EXPECT_TRUE(entry.terminal);
    std::ofstream(path) << "[Desktop Entry]\nType=Link\nExec=yes\n";
    EXPECT_FALSE(read_desktop_entry(path, entry));
    EXPECT_FALSE(read_desktop_entry(home.root() + "/none.desktop", entry));
}

TEST(EditorsTable, RowsCommentsAndLinesThatAreNoRow) {
    const auto rows = common::ParseEditorRows("# kate\n\n  \nonly | two\n a b | org.a |\t--line %l  %f\n"
                                              "c | | +%l %f | -n %f | terminal\r\nd | | | %f\n");
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].programs, (Words{"a", "b"}));
    EXPECT_EQ(rows[0].desktop_ids, (Words{"org.a"}));
    EXPECT_EQ(rows[0].at_line, (Words{"--line", "%l", "%f"}));
    EXPECT_EQ(rows[0].plain, (Words{"%f"}));
    EXPECT_FALSE(rows[0].terminal);
    EXPECT_EQ(rows[1].plain, (Words{"-n", "%f"}));
    EXPECT_TRUE(rows[1].terminal);
}

TEST(EditorsTable, EveryRowOfOursPutsTheFileAndTheLineIn) {
    std::ifstream file(QUILLON_SOURCE_FOLDER "/resources/editors.table");
    const auto rows = common::ParseEditorRows(
        {std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>())});
    EXPECT_GE(rows.size(), 20u);
    const auto holds = [](const Words &words, const char *code) {
        for (const std::string &word : words)
            if (word.find(code) != std::string::npos)
                return true;
        return false;
    };
    for (const common::EditorRow &row : rows) {
        EXPECT_TRUE(holds(row.at_line, "%f") && holds(row.at_line, "%l")) << row.programs[0];
        EXPECT_TRUE(holds(row.plain, "%f") && !holds(row.plain, "%l")) << row.programs[0];
    }
}

TEST(EditorsTable, AnEditorIsKnownByItsNameByItsEntryAndByWhatItLinksTo) {
    TemporaryHome home;
    const auto rows =
        common::ParseEditorRows("kate | org.kde.kate | %l %f\nvim.basic | | %l %f\nx | | a %l %f | %f | x11\n"
                                "x | | b %l %f\n");
    EXPECT_EQ(common::FindEditorRow(rows, "/any/kate"), &rows[0]);
    EXPECT_EQ(common::FindEditorRow(rows, "/usr/share/applications/org.kde.kate.desktop"), &rows[0]);
    EXPECT_EQ(common::FindEditorRow(rows, "/usr/bin/org.kde.kate"), nullptr);
    EXPECT_EQ(common::FindEditorRow(rows, "/usr/share/applications/kate.desktop"), nullptr);
    std::ofstream(home.root() + "/vim.basic") << "#!/bin/sh\n";
    ASSERT_EQ(symlink("vim.basic", (home.root() + "/vi").c_str()), 0);
    EXPECT_EQ(common::FindEditorRow(rows, home.root() + "/vi"), &rows[1]);
    setenv("WAYLAND_DISPLAY", "wayland-0", 1);
    EXPECT_EQ(common::FindEditorRow(rows, "/x"), &rows[3]);
    unsetenv("WAYLAND_DISPLAY");
    setenv("DISPLAY", ":0", 1);
    EXPECT_EQ(common::FindEditorRow(rows, "/x"), &rows[2]);
    unsetenv("DISPLAY");
}
