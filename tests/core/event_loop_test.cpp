#include "core/event_loop.h"

#include <gtest/gtest.h>

#include "console/output.h"
#include "core/command_table.h"
#include "core/startup.h"
#include "events/handlers.h"
#include "menus/menus.h"
#include "settings/setting_table.h"
#include "state/job_scope.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"
#include "toolbox/received_events.h"

namespace quillon {
namespace {

struct Moves {
    int selected = 0, dragged = 0, grown = 0, beeps = 0;
};
Moves moves;
WindowPart part = inContent;
WindowRef hit = nullptr;
WindowRef in_front = nullptr;
int slept = 0;

// A shell that has its menus, with a front whose windows are where the test says.
class Loop : public ::testing::Test {
  protected:
    void SetUp() override {
        home_.preferences("SPACECHAR=31\n");
        check_config();
        doDebug = use8bit = 0;
        moves = {};
        slept = 0;
        part = inContent;
        SetUpMenus();
        changed = *front;
        changed.idle = []() { return 0; };
        changed.sleep = [](int) { slept++; };
        changed.show_window = [](WindowRef, int) {};
        changed.select_window = [](WindowRef) { moves.selected++; };
        changed.drag_window = [](WindowRef, Point) { moves.dragged++; };
        changed.grow_window = [](WindowRef, Point) { moves.grown++; };
        changed.front_window = []() { return in_front; };
        changed.find_window = [](const EventRecord *, WindowRef *window) {
            *window = hit;
            return part;
        };
        front = &changed;
        theConsole = reinterpret_cast<WindowRef>(&changed);
        in_front = hit = theConsole;
        EventRecord left;
        while (GetNextEvent(everyEvent, &left))
            ;
    }
    void TearDown() override {
        while (job_running())
            end_job();
        theConsole = nullptr;
    }

    static EventRecord event(std::uint16_t what, std::uint32_t message, std::uint16_t modifiers) {
        return {what, message, 0, {10, 10}, modifiers, 0};
    }

    test::TemporaryHome home_;
    test::RecordingFront recorded_;
    static Front changed;
};
Front Loop::changed;

TEST_F(Loop, CommandKeysAreHonouredForKeyDownAndNotForAutoKey) {
    EventRecord key = event(keyDown, '8', cmdKey);
    DoEvent(&key);
    EXPECT_EQ(use8bit, 1);
    key.what = autoKey;
    DoEvent(&key);
    EXPECT_EQ(use8bit, 1);
}

TEST_F(Loop, ADragWithTheCommandKeyLeavesABackgroundWindowBehind) {
    int other = 0;
    hit = reinterpret_cast<WindowRef>(&other);
    part = inDrag;
    EventRecord click = event(mouseDown, 0, cmdKey);
    DoEvent(&click);
    EXPECT_EQ(moves.dragged, 1);
    EXPECT_EQ(moves.selected, 0);
    click.modifiers = 0;
    DoEvent(&click);
    EXPECT_EQ(moves.dragged, 1);
    EXPECT_EQ(moves.selected, 1);
}

TEST_F(Loop, AClickInABackgroundWindowSelectsIt) {
    int other = 0;
    hit = reinterpret_cast<WindowRef>(&other);
    EventRecord click = event(mouseDown, 0, 0);
    DoEvent(&click);
    EXPECT_EQ(moves.selected, 1);
}

TEST_F(Loop, TheModifiersOfTheLastClickAreKeptAsMaskedValues) {
    EventRecord click = event(mouseDown, 0, shiftKey | optionKey | cmdKey);
    DoEvent(&click);
    EXPECT_EQ(shift_key_down, 0x0200);
    EXPECT_EQ(option_key_down, 0x0800);
}

TEST_F(Loop, SuspendAndResume) {
    EventRecord suspend = event(osEvt, suspendResumeMessage, 0);
    DoEvent(&suspend);
    EXPECT_EQ(inBackground, 1);
    notifying = 1;
    EventRecord resume = event(osEvt, suspendResumeMessage | resumeFlag, 0);
    DoEvent(&resume);
    EXPECT_EQ(inBackground, 0);
    EXPECT_EQ(notifying, 0);
    EventRecord other = event(osEvt, 0x02000000, 0);
    inBackground = 1;
    DoEvent(&other);
    EXPECT_EQ(inBackground, 1);
}

TEST_F(Loop, TheNarrowMaskLeavesChoicesInTheQueue) {
    PostEvent(mouseDown, static_cast<std::uint32_t>(menu_edit) << 16 | 11, 0, {0, 0});
    PostEvent(osEvt, suspendResumeMessage, 0, {0, 0});
    EXPECT_EQ(main_event(mask_waiting), 1);
    EXPECT_EQ(inBackground, 1);
    EXPECT_EQ(use8bit, 0);
    EXPECT_EQ(main_event(mask_every_event), 1);
    EXPECT_EQ(use8bit, 1);
    inBackground = 0;
}

TEST_F(Loop, AMenuChoiceTravelsThroughTheQueueAsOneRecord) {
    PostEvent(mouseDown, static_cast<std::uint32_t>(menu_edit) << 16 | 11, 0, {0, 0});
    EventRecord seen;
    EXPECT_EQ(EventAvail(everyEvent, &seen), 1);
    EXPECT_EQ(seen.what, mouseDown);
    EXPECT_EQ(seen.message, static_cast<std::uint32_t>(menu_edit) << 16 | 11);
    EXPECT_EQ(main_event(mask_every_event), 1);
    EXPECT_EQ(EventAvail(everyEvent, &seen), 0);
}

TEST_F(Loop, TheFirstEmptyCallAfterSomethingHappenedDoesNotSleep) {
    EventRecord none;
    WaitNextEvent(mask_waiting, &none, 10);
    slept = 0;
    WakeUp();
    WaitNextEvent(mask_waiting, &none, 10);
    EXPECT_EQ(slept, 0);
    WaitNextEvent(mask_waiting, &none, 10);
    EXPECT_EQ(slept, 1);
}

TEST_F(Loop, WhileAJobRunsWhatStartsWorkStaysInTheQueueInOrder) {
    const JobScope scope;
    PostEvent(mouseDown, static_cast<std::uint32_t>(menu_edit) << 16 | 11, 0, {0, 0});
    PostEvent(keyDown, '8', cmdKey, {0, 0});
    PostHighLevelEvent(four("QUIL"), four("exec"), 0);
    PostHighLevelEvent(four("aevt"), four("odoc"), 0);
    PostHighLevelEvent(four("QUIL"), four("find"), 0);
    PostHighLevelEvent(four("QUIL"), four("frmt"), 0);
    EventRecord seen;
    ASSERT_EQ(GetNextEvent(everyEvent, &seen), 1);
    EXPECT_EQ(high_level_event_id(seen), four("frmt"));
    EXPECT_EQ(GetNextEvent(everyEvent, &seen), 0);
    end_job();
    const std::uint16_t order[] = {mouseDown, keyDown, kHighLevelEvent, kHighLevelEvent, kHighLevelEvent};
    for (const std::uint16_t what : order) {
        ASSERT_EQ(GetNextEvent(everyEvent, &seen), 1);
        EXPECT_EQ(seen.what, what);
    }
    EXPECT_EQ(high_level_event_id(seen), four("find"));
    begin_job();
}

TEST_F(Loop, AFullQueueRefusesAndKeepsWhatItHas) {
    int posted = 0;
    ::testing::internal::CaptureStderr();
    while (PostEvent(keyDown, static_cast<std::uint32_t>('a' + posted % 26), 0, {0, 0}))
        posted++;
    EXPECT_NE(::testing::internal::GetCapturedStderr().find("the event queue is full"), std::string::npos);
    EventRecord seen;
    for (int i = 0; i < posted; i++) {
        ASSERT_EQ(GetNextEvent(keyDownMask, &seen), 1);
        ASSERT_EQ(seen.message, static_cast<std::uint32_t>('a' + i % 26));
    }
    EXPECT_EQ(GetNextEvent(everyEvent, &seen), 0);
}

TEST_F(Loop, UserCancelTakesEscapeAndCommandPeriodAlone) {
    PostEvent(keyDown, '.', 0, {0, 0});
    EXPECT_EQ(CheckEventQueueForUserCancel(), 0);
    PostEvent(keyDown, '.', cmdKey, {0, 0});
    PostEvent(keyDown, 27, 0, {0, 0});
    EXPECT_EQ(CheckEventQueueForUserCancel(), 1);
    EXPECT_EQ(CheckEventQueueForUserCancel(), 1);
    EXPECT_EQ(CheckEventQueueForUserCancel(), 0);
    EventRecord left;
    EXPECT_EQ(GetNextEvent(everyEvent, &left), 1);
}

TEST_F(Loop, AfterASeriousErrorOnlyQuittingIsPossible) {
    ClearTextWindow();
    changed.sleep = [](int) { throw test::Waited{}; };
    EXPECT_THROW(DoJump(7), test::Waited);
    EXPECT_EQ(exit_status, 7);
    EXPECT_NE(recorded_->printed.find("\nA serious error has occurred.\n"), std::string::npos);
    haveosx = 1;
    ChangeMenus();
    EXPECT_EQ(IsMenuItemEnabled(optionsMenu, 2), 0);
    EXPECT_EQ(IsMenuItemEnabled(fileMenu, 1), 0);
    EXPECT_EQ(IsMenuItemEnabled(fileMenu, 20), 0);
    EXPECT_EQ(IsMenuItemEnabled(appleMenu, 3), 1);
    haveosx = 0;
    ChangeMenus();
    EXPECT_EQ(IsMenuItemEnabled(fileMenu, 20), 1);
    forceQuit = 0;
    haveosx = 1;
}

TEST_F(Loop, AnErrorWhileADviFileIsReadComesBackToTheRecoveryPoint) {
    const JobScope scope;
    volatile int times = 0;
    in_dvii = 1;
    if (setjmp(state) == 0) {
        times = times + 1;
        DoJump(9);
    }
    in_dvii = 0;
    EXPECT_EQ(times, 1);
    EXPECT_EQ(exit_status, 9);
    EXPECT_EQ(forceQuit, 0);
    EXPECT_EQ(job_running(), 1);
}

TEST_F(Loop, OtherProgramsEventsLeavePlacesForThePerson) {
    int received = 0;
    ::testing::internal::CaptureStderr();
    while (PostHighLevelEvent(four("QUIL"), four("frmt"), 7))
        received++;
    EXPECT_EQ(PostEvent(osEvt, suspendResumeMessage, 0, {0, 0}), 1);
    EXPECT_EQ(PostHighLevelEvent(four("QUIL"), four("gone"), 0), 1);
    ::testing::internal::GetCapturedStderr();
    EventRecord seen;
    while (GetNextEvent(everyEvent, &seen))
        ;
    EXPECT_GT(received, 400);
}

TEST(CommandTable, EveryRowHasAMenuAndItsNumberIsItsPlace) {
    std::int16_t menu = 0, item = 0;
    for (int i = 0; i < command_count; i++) {
        const Command &row = command_table[i];
        int known = 0;
        for (int k = 0; k < menu_row_count; k++)
            known += menu_rows[k].id == row.menu;
        EXPECT_EQ(known, 1) << row.menu;
        if (row.item == 0) {
            EXPECT_NE(row.procedure, nullptr);
            continue;
        }
        ASSERT_NE(row.title, nullptr);
        item = row.menu == menu ? static_cast<std::int16_t>(item + 1) : static_cast<std::int16_t>(1);
        menu = row.menu;
        EXPECT_EQ(row.item, item) << "menu " << menu;
    }
}

TEST(CommandTable, ARowThatChangesASettingNamesOneWithAGlobal) {
    int rows = 0;
    for (int i = 0; i < command_count; i++) {
        const Command &row = command_table[i];
        if (!row.setting)
            continue;
        rows++;
        const Setting *const setting = find_setting(row.setting);
        ASSERT_NE(setting, nullptr) << row.setting;
        EXPECT_TRUE(setting->flag || setting->number) << row.setting;
        EXPECT_TRUE(setting->kind == setting_flag || setting->kind == setting_choice) << row.setting;
        EXPECT_FALSE(row.procedure || row.marked) << row.setting;
    }
    EXPECT_GE(rows, 8);
}

TEST(CommandTable, NoCommandKeyStandsTwice) {
    for (int i = 0; i < command_count; i++)
        for (int k = i + 1; k < command_count; k++)
            if (command_table[i].key) {
                EXPECT_NE(command_table[i].key, command_table[k].key);
            }
}

} // namespace
} // namespace quillon
