// The menus as start-up makes them.
#include "menus/menus.h"

#include <gtest/gtest.h>

#include "core/command_table.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"

namespace quillon {
namespace {

class MenuBar : public ::testing::Test {
  protected:
    // Plays a front with three fonts.
    void three_fonts() {
        static Front with_fonts;
        with_fonts = *front;
        with_fonts.font_family = [](int index, BoundedBuffer &family) {
            static const char *const families[] = {"Courier", "Monaco", "monaco"};
            return index < 3 ? family.copy(families[index]) : 0;
        };
        front = &with_fonts;
    }

    test::TemporaryHome home_;
    test::RecordingFront front_;
};

TEST_F(MenuBar, TheFirstFontOfTheConsolesNameIsMarkedInUpperOrLowerCase) {
    home_.preferences("FONTNAME=MONACO\n");
    oldItem = 0;
    three_fonts();
    SetUpMenus();
    FillMenu(fontMenu);
    ASSERT_EQ(CountMenuItems(fontMenu), 3);
    for (std::int16_t item = 1; item <= 3; item++)
        EXPECT_EQ(IsItemChecked(fontMenu, item), item == 2) << item;
    EXPECT_EQ(oldItem, 2);
    oldItem = 0;
}

TEST_F(MenuBar, AFontThatIsNotInstalledIsNotMarked) {
    home_.preferences("FONTNAME=Mona\n");
    oldItem = 0;
    three_fonts();
    SetUpMenus();
    FillMenu(fontMenu);
    ASSERT_EQ(CountMenuItems(fontMenu), 3);
    for (std::int16_t item = 1; item <= 3; item++)
        EXPECT_EQ(IsItemChecked(fontMenu, item), 0) << item;
    EXPECT_EQ(oldItem, 0);
}

TEST_F(MenuBar, AnItemWithoutEffectIsDisabled) {
    home_.preferences("");
    SetUpMenus();
    for (int i = 0; i < command_count; i++) {
        const Command &row = command_table[i];
        const MenuHandle menu = GetMenuHandle(row.menu);
        if (row.item != 0 && !IsSeparator(menu, row.item) && !row.submenu) {
            EXPECT_EQ(IsMenuItemEnabled(menu, row.item), has_effect(row)) << row.title;
        }
    }
}

} // namespace
} // namespace quillon
