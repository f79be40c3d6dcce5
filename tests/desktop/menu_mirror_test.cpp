#include "desktop/menu_mirror.h"

#include <QAction>
#include <QMenuBar>
#include <gtest/gtest.h>

#include "state/job_state.h"
#include "toolbox/events.h"

namespace quillon::desktop {

namespace {

constexpr std::int16_t bar_menu = 901, sub_menu = 902, second_menu = 903;

class Mirror : public testing::Test {
  protected:
    void SetUp() override {
        menu_ = NewMenu(bar_menu, "R&D");
        AppendMenuItemText(menu_, "Fish && \xFF chips");
        InsertMenuSeparator(menu_, CountMenuItems(menu_));
        AppendMenuItemText(menu_, "Sub");
        SetItemCmd(menu_, 1, 't');
        SetMenuItemHierarchicalID(menu_, 3, sub_menu);
        AppendMenuItemText(NewMenu(sub_menu, "Sub"), "inner");
    }

    MenuHandle menu_ = nullptr;
};

} // namespace

TEST_F(Mirror, ItemsShowTextMarkKeyAndSeparator) {
    CheckMenuItem(menu_, 1, 1);
    MirrorMenu shown(menu_, nullptr);
    shown.mirror();
    ASSERT_EQ(shown.actions().size(), 3);
    EXPECT_EQ(shown.actions()[0]->text(), QStringLiteral("Fish &&&& \ufffd chips"));
    EXPECT_EQ(shown.actions()[0]->shortcut(), QKeySequence(QStringLiteral("Ctrl+T")));
    EXPECT_TRUE(shown.actions()[0]->isChecked());
    EXPECT_TRUE(shown.actions()[1]->isSeparator());
}

TEST_F(Mirror, TheSubstituteOfABlankIsShownAsOne) {
    space_char = 31;
    AppendMenuItemText(menu_, "Typeset \"a\x1Fpaper.tex\"");
    MirrorMenu shown(menu_, nullptr);
    shown.mirror();
    EXPECT_EQ(shown.actions()[3]->text(), QStringLiteral("Typeset \"a paper.tex\""));
}

TEST_F(Mirror, AnEmptyMenuSaysSoAndHasNoItem) {
    MenuHandle empty = NewMenu(second_menu, "Empty one");
    MirrorMenu shown(empty, nullptr);
    shown.mirror();
    ASSERT_EQ(shown.actions().size(), 1);
    EXPECT_EQ(shown.actions()[0]->text(), QStringLiteral("Empty"));
    EXPECT_FALSE(shown.actions()[0]->isEnabled());
    EXPECT_EQ(CountMenuItems(empty), 0);
    AppendMenuItemText(empty, "first");
    shown.mirror();
    ASSERT_EQ(shown.actions().size(), 1);
    EXPECT_EQ(shown.actions()[0]->text(), QStringLiteral("first"));
}

TEST_F(Mirror, MenuShowsTheShellsLatestState) {
    MirrorMenu shown(menu_, nullptr);
    shown.mirror();
    DisableMenuItem(menu_, 1);
    AppendMenuItemText(menu_, "New");
    shown.mirror();
    ASSERT_EQ(shown.actions().size(), 4);
    EXPECT_FALSE(shown.actions()[0]->isEnabled());
    EXPECT_EQ(shown.actions()[3]->text(), QStringLiteral("New"));
}

TEST_F(Mirror, FillerRunsOnceWhenTheMenuIsFirstShown) {
    static int filled;
    filled = 0;
    SetMenuFiller(menu_, [](MenuHandle menu) {
        ++filled;
        AppendMenuItemText(menu, "filled");
    });
    MirrorMenu shown(menu_, nullptr);
    EXPECT_EQ(filled, 0);
    shown.mirror();
    shown.mirror();
    EXPECT_EQ(filled, 1);
    EXPECT_EQ(shown.actions().last()->text(), QStringLiteral("filled"));
}

TEST_F(Mirror, ChoiceOnlyPostsAnEvent) {
    EventRecord event;
    while (GetNextEvent(everyEvent, &event))
        ;
    MirrorMenu shown(menu_, nullptr);
    shown.mirror();
    shown.actions()[0]->trigger();
    ASSERT_EQ(GetNextEvent(everyEvent, &event), 1);
    EXPECT_EQ(event.what, mouseDown);
    EXPECT_EQ(event.message, static_cast<std::uint32_t>(bar_menu) << 16 | 1);
    EXPECT_EQ(GetNextEvent(everyEvent, &event), 0);
}

TEST_F(Mirror, SubmenuIsMadeWhenItShows) {
    MirrorMenu shown(menu_, nullptr);
    shown.mirror();
    QMenu *const submenu = shown.actions()[2]->menu();
    ASSERT_NE(submenu, nullptr);
    EXPECT_TRUE(submenu->actions().isEmpty());
    emit submenu->aboutToShow();
    ASSERT_EQ(submenu->actions().size(), 1);
    EXPECT_EQ(submenu->actions()[0]->text(), QStringLiteral("inner"));
}

TEST_F(Mirror, BarFollowsTheShellsMenusAndGreysWhileCommandsAreHeldBack) {
    QMenuBar bar;
    MenuMirror mirror(&bar);
    const int height = bar.minimumHeight();
    EXPECT_GT(height, 0);
    InsertMenu(menu_);
    InsertMenu(NewMenu(second_menu, "Rd"));
    mirror.sync();
    ASSERT_EQ(bar.actions().size(), 2);
    EXPECT_EQ(bar.actions()[0]->text(), QStringLiteral("&R&&D"));
    EXPECT_EQ(bar.actions()[1]->text(), QStringLiteral("R&d")); // another mnemonic than the first
    mirror.set_commands_admitted(false);
    EXPECT_FALSE(bar.actions()[0]->isEnabled());
    mirror.sync();
    EXPECT_FALSE(bar.actions()[1]->isEnabled());
    mirror.set_commands_admitted(true);
    EXPECT_TRUE(bar.actions()[0]->isEnabled());
    DisableMenuItem(menu_, 0);
    mirror.sync();
    EXPECT_FALSE(bar.actions()[0]->isEnabled());
}

} // namespace quillon::desktop
