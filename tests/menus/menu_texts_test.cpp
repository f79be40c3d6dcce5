// Menu texts that come from file names, and the enabling of whole menus.
#include <gtest/gtest.h>

#include "menus/menus.h"
#include "support/recording_front.h"

namespace quillon {
namespace {

TEST(MenuTexts, AFileNameIsNeverASeparator) {
    const MenuHandle menu = NewMenu(900, "Files");
    const char *const names[] = {"(-x", "-", "(-", "(-draft).tex", "-.fmt", "plain"};
    for (const char *const name : names)
        AppendMenuItemText(menu, name);
    InsertMenuItemText(menu, "(-first", 0);
    BoundedString<64> text;
    ASSERT_EQ(CountMenuItems(menu), 7);
    for (std::int16_t item = 1; item <= 7; item++) {
        EXPECT_FALSE(IsSeparator(menu, item)) << item;
        EXPECT_TRUE(IsMenuItemEnabled(menu, item)) << item;
        GetMenuItemText(menu, item, text);
        EXPECT_STREQ(text.c_str(), item == 1 ? "(-first" : names[item - 2]);
    }
}

TEST(MenuTexts, ASeparatorStandsWhereItIsPutAndCannotBeEnabled) {
    const MenuHandle menu = NewMenu(901, "Lines");
    AppendMenuItemText(menu, "one");
    AppendMenuItemText(menu, "two");
    InsertMenuSeparator(menu, 1);
    EnableMenuItem(menu, 2);
    EXPECT_FALSE(IsSeparator(menu, 1));
    EXPECT_TRUE(IsSeparator(menu, 2));
    EXPECT_FALSE(IsMenuItemEnabled(menu, 2));
    EXPECT_FALSE(IsSeparator(menu, 3));
}

TEST(MenuTexts, WholeMenusAreDisabledAndEnabled) {
    const MenuHandle menu = NewMenu(902, "Whole"), empty = NewMenu(903, "Empty");
    for (const char *const name : {"a", "b", "c"})
        AppendMenuItemText(menu, name);
    disable_menu(menu);
    for (std::int16_t item = 1; item <= 3; item++)
        EXPECT_FALSE(IsMenuItemEnabled(menu, item));
    enable_menu(menu);
    for (std::int16_t item = 1; item <= 3; item++)
        EXPECT_TRUE(IsMenuItemEnabled(menu, item));
    disable_menu(empty);
    enable_menu(empty);
    EXPECT_EQ(CountMenuItems(empty), 0);
    EXPECT_TRUE(IsMenuItemEnabled(empty, 0));
}

} // namespace
} // namespace quillon
