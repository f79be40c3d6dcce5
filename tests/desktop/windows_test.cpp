#include <QComboBox>
#include <QFileDialog>
#include <QTest>
#include <gtest/gtest.h>

#include <vector>

#include "desktop/choosers.h"

namespace quillon::desktop {

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

} // namespace quillon::desktop
