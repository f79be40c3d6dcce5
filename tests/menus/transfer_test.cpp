#include "menus/transfer.h"

#include <gtest/gtest.h>

#include "core/command_table.h"
#include "menus/menus.h"
#include "settings/settings.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"
#include "toolbox/menus.h"

namespace quillon {
namespace {

// What the next "cmdkey" dialog holds.
std::string typed_key;

class Transfer : public ::testing::Test {
  protected:
    void SetUp() override {
        home_.preferences("SPACECHAR=31\n");
        space_char = 31;
        typed_key.clear();
        front_->fills = [](DialogRef window) { SetControlText(window, 3, typed_key.c_str()); };
        SetUpMenus();
    }
    void TearDown() override { space_char = 202; }

    // Adds the application at apps/NAME with a command key.
    void add(const std::string &name, const std::string &key = "") {
        front_->answer = application(name);
        typed_key = key;
        DoTransferItem(static_cast<std::int16_t>(
            CountMenuItems(transferMenu) == 1 ? 1 : CountMenuItems(transferMenu) - 2));
    }
    std::string application(const std::string &name) const {
        return home_.silent_bundle("apps/" + name, "APPN");
    }
    static std::vector<std::string> items(MenuHandle menu) {
        std::vector<std::string> all;
        BoundedString<256> text;
        for (std::int16_t item = 1; item <= CountMenuItems(menu); item++) {
            GetMenuItemText(menu, item, text);
            all.push_back(text.c_str());
        }
        return all;
    }
    static std::string stored(int slot) {
        const char *const value = get_str_resource(("TEXMENU" + std::to_string(slot)).c_str());
        return value ? value : "";
    }
    using Items = std::vector<std::string>;

    test::TemporaryHome home_;
    test::RecordingFront front_;
};

TEST_F(Transfer, AnEmptyMenuHoldsAddAlone) {
    EXPECT_EQ(items(transferMenu), (Items{"Add ..."}));
    EXPECT_EQ(CountMenuItems(deleteMenu), 0);
}

TEST_F(Transfer, AnEntryIsStoredAndShown) {
    add("My Editor", "E");
    EXPECT_EQ(stored(1), home_.path("apps/My\x1F"
                                    "Editor.app::E"));
    EXPECT_EQ(items(transferMenu), (Items{"My Editor.app", "-", "Add ...", "Delete", "Change"}));
    EXPECT_EQ(GetItemCmd(transferMenu, 1), 'E');
    EXPECT_EQ(items(deleteMenu), (Items{"My Editor.app"}));
    EXPECT_EQ(items(changeMenu), (Items{"My Editor.app"}));
    EXPECT_EQ(GetMenuItemHierarchicalID(transferMenu, 4), menu_delete);
    EXPECT_EQ(GetMenuItemHierarchicalID(transferMenu, 5), menu_change);
    EXPECT_EQ(front_->prompt, "Choose an application");
}

TEST_F(Transfer, WithoutAKeyTheEntryIsThePathAlone) {
    add("One");
    EXPECT_EQ(stored(1), home_.path("apps/One.app"));
    EXPECT_EQ(GetItemCmd(transferMenu, 1), 0);
}

TEST_F(Transfer, OnlyTheFirstCharacterOfAKeyIsKept) {
    add("One", "XYZ");
    EXPECT_EQ(stored(1), home_.path("apps/One.app::X"));
    add("Two", "\xC3\xA9");
    EXPECT_EQ(stored(2), home_.path("apps/Two.app"));
    EXPECT_EQ(front_->printed, "A command key is a letter, a digit or a sign.\n");
}

TEST_F(Transfer, CancelInTheKeyDialogStillGivesTheKey) {
    front_->pressed = 2;
    add("One", "K");
    EXPECT_EQ(stored(1), home_.path("apps/One.app::K"));
}

TEST_F(Transfer, ACancelledChooserChangesNothing) {
    add("One");
    front_->answer.clear();
    DoTransferItem(3);
    ChangeTransferItem(1);
    EXPECT_EQ(front_->prompt, "Choose a Transfer application");
    EXPECT_EQ(items(transferMenu), (Items{"One.app", "-", "Add ...", "Delete", "Change"}));
}

TEST_F(Transfer, WithTwentyEntriesNothingIsAdded) {
    for (int i = 1; i <= 20; i++)
        add("App" + std::to_string(i));
    EXPECT_EQ(CountMenuItems(transferMenu), 24);
    front_->asked = 0;
    add("TwentyFirst");
    EXPECT_EQ(front_->asked, 0);
    EXPECT_EQ(CountMenuItems(transferMenu), 24);
    EXPECT_EQ(stored(20), home_.path("apps/App20.app"));
    EXPECT_EQ(stored(21), "");
}

TEST_F(Transfer, DeletingMovesTheOthersUp) {
    for (const char *const name : {"A", "B", "C", "D"})
        add(name);
    CutTransferItem(2);
    EXPECT_EQ(items(deleteMenu), (Items{"A.app", "C.app", "D.app"}));
    EXPECT_EQ(stored(2), home_.path("apps/C.app"));
    EXPECT_EQ(stored(3), home_.path("apps/D.app"));
    EXPECT_EQ(stored(4), "");
    SetUpMenus();
    EXPECT_EQ(items(changeMenu), (Items{"A.app", "C.app", "D.app"}));
}

TEST_F(Transfer, DeletingTheOnlyEntryLeavesAddAlone) {
    add("A");
    CutTransferItem(1);
    EXPECT_EQ(items(transferMenu), (Items{"Add ..."}));
    EXPECT_EQ(stored(1), "");
}

TEST_F(Transfer, AnEntryIsReplaced) {
    add("A");
    add("B");
    front_->answer = application("New");
    typed_key = "N";
    ChangeTransferItem(2);
    EXPECT_EQ(stored(2), home_.path("apps/New.app::N"));
    EXPECT_EQ(items(deleteMenu), (Items{"A.app", "New.app"}));
}

TEST_F(Transfer, ItemsThatAreNotThereDoNothing) {
    add("A");
    front_->asked = 0;
    for (const int item : {-1, 0, 2}) {
        CutTransferItem(static_cast<std::int16_t>(item));
        ChangeTransferItem(static_cast<std::int16_t>(item));
    }
    DoTransferItem(2);
    EXPECT_EQ(front_->asked, 0);
    EXPECT_EQ(items(deleteMenu), (Items{"A.app"}));
}

TEST_F(Transfer, ItsKeysWinOverTheOthersButForQuit) {
    add("A", "o");
    add("B", "q");
    EXPECT_EQ(MenuKey('O'), menu_transfer << 16 | 1);
    EXPECT_EQ(HasItsKey(transferMenu, 1), 1);
    EXPECT_EQ(HasItsKey(fileMenu, file_typeset_chosen), 0);
    EXPECT_EQ(MenuKey('q'), menu_file << 16 | file_quit);
    EXPECT_EQ(HasItsKey(transferMenu, 2), 0);
    CutTransferItem(1);
    EXPECT_EQ(MenuKey('O'), menu_file << 16 | file_typeset_chosen);
}

TEST_F(Transfer, TheListEndsAtTheFirstEmptyKey) {
    home_.preferences("TEXMENU1=/a/One.app\nTEXMENU3=/a/Three.app\n");
    SetUpMenus();
    EXPECT_EQ(items(deleteMenu), (Items{"One.app"}));
}

} // namespace
} // namespace quillon
