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
    // The marks of the three items of the Font menu, "*" or "-", when the settings hold that font.
    std::string marks_for(const std::string &font) {
        home_.preferences("FONTNAME=" + font + "\n");
        oldItem = 0;
        three_fonts();
        SetUpMenus();
        FillMenu(fontMenu);
        std::string marks;
        for (std::int16_t item = 1; item <= CountMenuItems(fontMenu); item++)
            marks += IsItemChecked(fontMenu, item) ? '*' : '-';
        return marks;
    }

    test::TemporaryHome home_;
    test::RecordingFront front_;
};

TEST_F(MenuBar, TheFirstFontOfTheConsolesNameIsMarkedInUpperOrLowerCase) {
    EXPECT_EQ(marks_for("MONACO"), "-*-");
    EXPECT_EQ(oldItem, 2);
    oldItem = 0;
}

TEST_F(MenuBar, AFontThatIsNotInstalledIsNotMarked) {
    EXPECT_EQ(marks_for("Mona"), "---");
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
