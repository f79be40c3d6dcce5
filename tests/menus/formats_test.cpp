#include "menus/formats.h"

#include <gtest/gtest.h>
#include <sys/xattr.h>

#include "kpath/search_paths.h"
#include "menus/menus.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"

namespace quillon {
namespace {

class Formats : public ::testing::Test {
  protected:
    void SetUp() override {
        useETeX = 0;
        format_folder.clear();
        format_name.clear();
        space_char = 31;
        SetUpMenus();
    }
    void format(const std::string &name, const char *creator) {
        const std::string path = home_.file(name);
        ASSERT_EQ(setxattr(path.c_str(), "user.quillon.creator", creator, 4, 0), 0);
    }
    void search(const std::string &folders) {
        home_.preferences("TEXFORMATS=" + folders + "\n");
        setpaths(1u << slot_texformats);
        SetFormatMenu();
    }
    std::string listed() const {
        std::string all;
        for (std::int16_t i = 1; i <= CountMenuItems(formatMenu); i++) {
            BoundedString<256> text;
            GetMenuItemText(formatMenu, i, text);
            all += std::string(text.c_str()) + (IsItemChecked(formatMenu, i) ? "* " : " ");
        }
        return all;
    }
    std::string first_line(const std::string &text) {
        BoundedString<256> out;
        const char *const found = GetFormatFromFile(home_.file("work/source.tex", text).c_str(), out);
        return found ? std::string("<") + found + ">" : "(none)";
    }

    test::TemporaryHome home_;
    test::RecordingFront front_;
};

TEST_F(Formats, TheStampNotTheExtensionSeparatesTheModes) {
    format("f1/plain.fmt", "QXET");
    format("f1/plain.efmt", "qXET");
    search(home_.path("f1"));
    EXPECT_EQ(listed(), "plain ");
    useETeX = 1;
    SetFormatMenu();
    EXPECT_EQ(listed(), "plain ");
    std::filesystem::remove(home_.path("f1/plain.efmt"));
    SetFormatMenu();
    EXPECT_EQ(listed(), "");
}

TEST_F(Formats, OnlyTheLastExtensionCounts) {
    format("f2/latex.fmt.bak", "QXET");
    format("f2/my.tex.fmt", "QXET");
    search(home_.path("f2"));
    EXPECT_EQ(listed(), "my.tex ");
}

TEST_F(Formats, AFinalSlashDoesNotHideAFolderAndDotIsPassedOver) {
    format("f3/a.fmt", "QXET");
    format("work/here.fmt", "QXET");
    search(".:" + home_.path("f3") + "/");
    EXPECT_EQ(listed(), "a ");
    EXPECT_EQ(format_folder.view(), home_.path("f3"));
}

TEST_F(Formats, AMissingFolderIsSaidAndPassedOver) {
    format("f4/a.fmt", "QXET");
    search(home_.path("nowhere") + ":" + home_.path("f4"));
    EXPECT_EQ(listed(), "a ");
    EXPECT_NE(front_->printed.find("I can't find the TeX formats folder <" + home_.path("nowhere") + ">.\n"),
              std::string::npos);
}

TEST_F(Formats, AFolderWhosePathDoesNotFitIsSaidAndPassedOver) {
    const std::string longest = "/" + std::string(10000, 'd');
    format("f5/a.fmt", "QXET");
    search(longest + ":" + home_.path("f5"));
    EXPECT_EQ(listed(), "a ");
    EXPECT_NE(front_->printed.find("I can't find the TeX formats folder <" + longest + ">.\n"),
              std::string::npos);
}

TEST_F(Formats, WithoutAnyFormatFourLinesSayWhatToDo) {
    format_name.copy("old");
    search(home_.folder("empty"));
    EXPECT_NE(
        front_->printed.find("I can't find any formats.\nCheck your TEXFORMATS search path or build\n"
                             "a format file using the \"Build format\" command\nunder the \"File\" Menu.\n"),
        std::string::npos);
    EXPECT_TRUE(format_name.empty());
}

TEST_F(Formats, TheChoiceIsRememberedByMode) {
    format("f5/one.fmt", "QXET");
    format("f5/two.fmt", "QXET");
    format("f5/three.fmt", "qXET");
    search(home_.path("f5"));
    DoFormat(2);
    EXPECT_EQ(listed(), "one two* ");
    EXPECT_EQ(format_name.view(), "two");
    EXPECT_STREQ(get_str_resource("PDFTEXFORMAT"), "two");
    useETeX = 1;
    SetFormatMenu();
    DoFormat(1);
    EXPECT_STREQ(get_str_resource("PDFETEXFORMAT"), "three");
    useETeX = 0;
    SetFormatMenu();
    SetDefaultFormat();
    EXPECT_EQ(listed(), "one two* ");
}

TEST_F(Formats, AFormatThatIsGoneComesBackWithItsFile) {
    format("f6/a.fmt", "QXET");
    format("f6/b.fmt", "QXET");
    search(home_.path("f6"));
    DoFormat(2);
    std::filesystem::remove(home_.path("f6/b.fmt"));
    SetFormatMenu();
    SetDefaultFormat();
    EXPECT_TRUE(format_name.empty());
    EXPECT_STREQ(get_str_resource("PDFTEXFORMAT"), "b");
    format("f6/b.fmt", "QXET");
    SetFormatMenu();
    SetDefaultFormat();
    EXPECT_EQ(format_name.view(), "b");
}

TEST_F(Formats, TheFormatOfAFirstLine) {
    EXPECT_EQ(first_line("%&pdflatex\nrest"), "<pdflatex>");
    EXPECT_EQ(first_line("% format = latex\r\nrest"), "<latex>");
    EXPECT_EQ(first_line("%format=\n"), "(none)");
    EXPECT_EQ(first_line("%&\n"), "<>");
    const std::string longest(246, 'f');
    EXPECT_EQ(first_line("%&" + longest + "\n"), "<" + longest + ">");
    EXPECT_EQ(first_line("%&" + longest + "g\n"), "<" + longest + ">");
    EXPECT_EQ(first_line("x&tex"), "<tex>");
    EXPECT_EQ(first_line("% Format = latex\n"), "(none)");
    EXPECT_EQ(first_line(""), "(none)");
}

} // namespace
} // namespace quillon
