#include "menus/recent_files.h"

#include <gtest/gtest.h>

#include "menus/menus.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"

namespace quillon {
namespace {

class RecentFiles : public ::testing::Test {
  protected:
    void SetUp() override {
        home_.preferences("");
        useFullPaths = 0;
        SetUpMenus();
    }
    void add(int count) {
        for (int i = count; i >= 1; i--)
            SaveRecentFile(("/vol/" + std::to_string(i) + ".tex").c_str());
    }
    std::string item(int number) const {
        BoundedString<1024> text;
        GetMenuItemText(recentMenu, static_cast<std::int16_t>(number), text);
        return text.c_str();
    }
    int count() const { return CountMenuItems(recentMenu); }

    test::TemporaryHome home_;
    test::RecordingFront front_;
};

TEST_F(RecentFiles, TheSameSourceTwiceIsOneEntryAtTheTop) {
    add(2);
    SaveRecentFile("/vol/2.tex");
    EXPECT_EQ(count(), 5);
    EXPECT_EQ(item(1), "2.tex");
    EXPECT_EQ(item(2), "1.tex");
}

TEST_F(RecentFiles, TheThirteenthDropsTheOldest) {
    add(12);
    SaveRecentFile("/vol/new.tex");
    EXPECT_EQ(count(), 15);
    EXPECT_EQ(item(1), "new.tex");
    EXPECT_EQ(item(12), "11.tex");
    EXPECT_EQ(item(15), "Remove all items");
}

TEST_F(RecentFiles, AFileInSlot5MovesToTheTopAndTheLaterKeepTheirPlaces) {
    add(12);
    SaveRecentFile("/vol/5.tex");
    const char *const order[] = {"5", "1", "2", "3", "4", "6", "7", "8", "9", "10", "11", "12"};
    for (int i = 0; i < 12; i++)
        EXPECT_EQ(item(i + 1), std::string(order[i]) + ".tex");
}

TEST_F(RecentFiles, RemovingTheOnlyEntryLeavesAnEmptyMenu) {
    add(1);
    DeleteRecentFile(1);
    EXPECT_EQ(count(), 0);
    SaveRecentFile("/vol/again.tex");
    EXPECT_EQ(count(), 4);
    EXPECT_TRUE(IsSeparator(recentMenu, 2));
}

TEST_F(RecentFiles, RemovingOneMovesTheLaterUp) {
    add(3);
    DeleteRecentFile(2);
    EXPECT_EQ(count(), 5);
    EXPECT_EQ(item(2), "3.tex");
    EXPECT_TRUE(RecentFile[3].empty());
}

TEST_F(RecentFiles, PathsAreComparedAsTheyStand) {
    SaveRecentFile("/a/x.tex");
    SaveRecentFile("/a//x.tex");
    EXPECT_EQ(count(), 5);
}

TEST_F(RecentFiles, ANameWithoutAFolderIsShownWhole) {
    SaveRecentFile("x.tex");
    EXPECT_EQ(item(1), "x.tex");
}

TEST_F(RecentFiles, TheSwitchShowsFullPathsAndBack) {
    add(2);
    EXPECT_EQ(item(4), "Show full paths");
    ShowFullRecentPaths();
    EXPECT_EQ(item(1), "vol:1.tex");
    EXPECT_EQ(item(4), "Show file names only");
    EXPECT_STREQ(get_str_resource("USEFULLPATHS"), "1");
    ShowFullRecentPaths();
    EXPECT_EQ(item(1), "1.tex");
    EXPECT_STREQ(get_str_resource("USEFULLPATHS"), "0");
}

TEST_F(RecentFiles, TheListIsWrittenWholeAndReadWithoutWhatIsGone) {
    const std::string kept = home_.file("work/kept.tex");
    SaveRecentFile("/vol/gone.tex");
    SaveRecentFile(kept.c_str());
    SaveRecentItems();
    EXPECT_STREQ(get_str_resource("RECENTFILE2"), "/vol/gone.tex");
    EXPECT_EQ(get_str_resource("RECENTFILE3"), nullptr);
    SetRecentMenu();
    EXPECT_EQ(count(), 4);
    EXPECT_EQ(RecentFile[1].view(), kept);
}

TEST_F(RecentFiles, RemoveAllEmptiesEverything) {
    add(4);
    DeleteAllRecentItems();
    EXPECT_EQ(count(), 0);
    EXPECT_TRUE(RecentFile[1].empty());
}

} // namespace
} // namespace quillon
