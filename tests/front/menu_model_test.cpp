// The menus' model, which both fronts show.
#include "toolbox/menus.h"

#include <gtest/gtest.h>

#include <cstring>

namespace quillon {
namespace {

constexpr std::int16_t menu_id = 900;

class MenuModel : public ::testing::Test {
  protected:
    MenuModel() {
        for (const char *const title : {"one", "two", "three"})
            AppendMenuItemText(menu_, title);
    }
    ~MenuModel() override { NewMenu(menu_id, ""); }
    std::string item(int number) const {
        BoundedString<64> text;
        GetMenuItemText(menu_, static_cast<std::int16_t>(number), text);
        return text.c_str();
    }

    const MenuHandle menu_ = NewMenu(menu_id, "Test");
};

TEST_F(MenuModel, KeysAreFoundInSmallAndCapitalLettersFromAToZ) {
    SetItemCmd(menu_, 1, 'A');
    SetItemCmd(menu_, 2, 'Z');
    SetItemCmd(menu_, 3, '[');
    EXPECT_EQ(MenuKey('a'), menu_id << 16 | 1);
    EXPECT_EQ(MenuKey('A'), menu_id << 16 | 1);
    EXPECT_EQ(MenuKey('z'), menu_id << 16 | 2);
    EXPECT_EQ(MenuKey('Z'), menu_id << 16 | 2);
    EXPECT_EQ(MenuKey('['), menu_id << 16 | 3);
    EXPECT_EQ(MenuKey('{'), 0);
}

TEST_F(MenuModel, AnItemGoesBehindTheOneNamedOrToTheNearestEnd) {
    InsertMenuItemText(menu_, "first", 0);
    InsertMenuItemText(menu_, "second", 1);
    InsertMenuItemText(menu_, "last", 99);
    InsertMenuItemText(menu_, "very first", -1);
    EXPECT_EQ(CountMenuItems(menu_), 7);
    const char *const order[] = {"very first", "first", "second", "one", "two", "three", "last"};
    for (int i = 0; i < 7; i++)
        EXPECT_EQ(item(i + 1), order[i]);
}

TEST_F(MenuModel, InADisabledMenuNoItemIsEnabledAndNoKeyChooses) {
    SetItemCmd(menu_, 3, '9');
    DisableMenuItem(menu_, 0);
    EXPECT_EQ(IsMenuItemEnabled(menu_, 3), 0);
    EXPECT_EQ(MenuKey('9'), 0);
    EnableMenuItem(menu_, 0);
    EXPECT_EQ(IsMenuItemEnabled(menu_, 3), 1);
    EXPECT_EQ(MenuKey('9'), menu_id << 16 | 3);
    DisableMenuItem(menu_, 3);
    EXPECT_EQ(IsMenuItemEnabled(menu_, 3), 0);
    EXPECT_EQ(IsMenuItemEnabled(menu_, 2), 1);
}

TEST_F(MenuModel, TheLastItemIsOneAndTheNextIsNone) {
    CheckMenuItem(menu_, 3, 1);
    CheckMenuItem(menu_, 4, 1);
    EXPECT_EQ(IsItemChecked(menu_, 3), 1);
    EXPECT_EQ(IsItemChecked(menu_, 4), 0);
    EXPECT_EQ(item(4), "");
    DeleteMenuItem(menu_, 4);
    EXPECT_EQ(CountMenuItems(menu_), 3);
    DeleteMenuItem(menu_, 3);
    EXPECT_EQ(CountMenuItems(menu_), 2);
}

} // namespace
} // namespace quillon
