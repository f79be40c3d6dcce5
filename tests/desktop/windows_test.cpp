#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

#include <vector>

#include "desktop/choosers.h"
#include "widgets/desktop_entries.h"

namespace quillon::desktop {

namespace {

void write_file(const QString &path, const QByteArray &contents) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(contents);
}

} // namespace

TEST(Choosers, FilterRecordBecomesANameFilter) {
    NavMenuItem item;
    item.creator = four("1000");
    item.type = four("1000");
    item.text.copy("All files with .aux extension");
    EXPECT_EQ(name_filter(item), QStringLiteral("All files with .aux extension (*.aux)"));
    item.creator = four("2000");
    item.text.copy("All files with glo extension");
    EXPECT_EQ(name_filter(item), QStringLiteral("All files with glo extension (*.glo)"));
    item.creator = four("4000");
    item.text.copy("All files");
    EXPECT_EQ(name_filter(item), QStringLiteral("All files (*)"));
}

TEST(Choosers, ThePopUpChangesWhatIsListed) {
    static std::vector<OSType> picked;
    picked.clear();
    NavMenuItem filters[2];
    filters[0].creator = four("1000");
    filters[0].text.copy("All files with .tex extension");
    filters[1].creator = four("4000");
    filters[1].text.copy("All files");
    NavRequest request = {};
    request.kind = navGetFile;
    request.prompt = "Choose";
    request.filters = filters;
    request.filter_count = 2;
    request.filter_picked = [](const NavMenuItem *item) { picked.push_back(item->creator); };
    QFileDialog dialog;
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    prepare_file_dialog(dialog, request);
    dialog.show();
    auto *const pop_up = dialog.findChild<QComboBox *>(QStringLiteral("fileTypeCombo"));
    ASSERT_NE(pop_up, nullptr);
    EXPECT_EQ(pop_up->currentText(), QStringLiteral("All files with .tex extension"));
    QTest::keyClick(pop_up, Qt::Key_Down);
    EXPECT_EQ(pop_up->currentText(), QStringLiteral("All files"));
    EXPECT_EQ(picked, std::vector<OSType>{four("4000")});
    QTest::keyClick(pop_up, Qt::Key_Up);
    EXPECT_EQ(picked, (std::vector<OSType>{four("4000"), four("1000")}));
}

TEST(DesktopEntries, ReadsApplicationsAndLeavesOutWhatIsHidden) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a.desktop"));
    write_file(path,
               "[Desktop Entry]\nType=Application\nName=Editor\nComment=Edits\nIcon=edit\nExec=true %f\n"
               "[Desktop Action new]\nName=New window\n");
    const widgets::DesktopEntry entry = widgets::read_desktop_entry(path);
    EXPECT_EQ(entry.name, QStringLiteral("Editor"));
    EXPECT_EQ(entry.icon, QStringLiteral("edit"));
    EXPECT_EQ(entry.path, path);
    for (const char *const line : {"NoDisplay=true\n", "Hidden=true\n", "TryExec=/no/such/program\n",
                                   "Type=Link\n", "OnlyShowIn=NoSuchDesktop;\n"}) {
        write_file(path,
                   QByteArray("[Desktop Entry]\n") + line + "Type=Application\nName=Editor\nExec=true\n");
        EXPECT_TRUE(widgets::read_desktop_entry(path).path.isEmpty()) << line;
    }
}

TEST(DesktopEntries, BrokenEntriesAreReadAsWhereTheyAreStarted) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a.desktop"));
    write_file(path, "[Desktop Entry]\nType=Application\nExec=true\nName=A\\sB\\\\\\x\nName=Other\n");
    EXPECT_EQ(widgets::read_desktop_entry(path).name, QStringLiteral("A B\\\\x"));
    for (const char *const text : {" [Desktop Entry]\nType=Application\nExec=true\n",
                                   "\r[Desktop Entry]\nType=Application\nExec=true\n",
                                   "[Desktop Entry]\n\rType=Application\nExec=true\n",
                                   "[Desktop Entry]\nType=Application\nExec=\nExec=true\n",
                                   "[Desktop Entry]\nType=Link\nType=Application\nExec=true\n"}) {
        write_file(path, text);
        EXPECT_TRUE(widgets::read_desktop_entry(path).path.isEmpty()) << text;
    }
}

TEST(DesktopEntries, UsersOwnEntryHidesTheInstalledOne) {
    const QTemporaryDir data, system;
    const QByteArray before_home = qgetenv("XDG_DATA_HOME"), before_dirs = qgetenv("XDG_DATA_DIRS");
    for (const QTemporaryDir *const root : {&data, &system})
        QDir(root->path()).mkdir(QStringLiteral("applications"));
    write_file(system.filePath(QStringLiteral("applications/b.desktop")),
               "[Desktop Entry]\nType=Application\nName=Zeta\nExec=true\n");
    write_file(system.filePath(QStringLiteral("applications/a.desktop")),
               "[Desktop Entry]\nType=Application\nName=Theirs\nExec=true\n");
    write_file(data.filePath(QStringLiteral("applications/a.desktop")),
               "[Desktop Entry]\nType=Application\nName=Mine\nExec=true\n");
    qputenv("XDG_DATA_HOME", data.path().toUtf8());
    qputenv("XDG_DATA_DIRS", system.path().toUtf8());
    const QList<widgets::DesktopEntry> entries = widgets::installed_applications();
    qputenv("XDG_DATA_HOME", before_home);
    qputenv("XDG_DATA_DIRS", before_dirs);
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(entries[0].name, QStringLiteral("Mine"));
    EXPECT_EQ(entries[1].name, QStringLiteral("Zeta"));
}

} // namespace quillon::desktop
