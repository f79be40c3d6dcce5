// Besides choices, the event loop handles updates, activation, leaving, and coming to the front.
#include <gtest/gtest.h>

#include <vector>

#include "console/window.h"
#include "core/event_loop.h"
#include "core/startup.h"
#include "events/handlers.h"
#include "menus/menus.h"
#include "menus/recent_files.h"
#include "state/job_scope.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"
#include "toolbox/received_events.h"
#include "tools/processes.h"

namespace quillon {
namespace {

struct Told {
    std::vector<int> admitted, active;
    int updates = 0, grown = 0, brought = 0;
};
Told told;
WindowPart part = inContent;
WindowRef hit = nullptr;

class Waits : public ::testing::Test {
  protected:
    void SetUp() override {
        home_.preferences("SPACECHAR=31\nDEBUG=0\n");
        SetUpMenus();
        DoAEInstallation();
        doQuit = aeQuit = inBackground = 0;
        told = {};
        changed = *front;
        changed.idle = []() { return 0; };
        changed.sleep = [](int) {};
        changed.commands_admitted = [](int admitted) { told.admitted.push_back(admitted); };
        changed.text_focus = [](int, int active) {
            if (active >= 0)
                told.active.push_back(active);
        };
        changed.text_update = [](int) { told.updates++; };
        changed.grow_window = [](WindowRef, Point) { told.grown++; };
        changed.bring_to_front = [](const char *) { told.brought++; };
        changed.find_window = [](const EventRecord *, WindowRef *window) {
            *window = hit;
            return part;
        };
        theConsole = FrontWindow();
        front = &changed;
        EventRecord left;
        while (GetNextEvent(everyEvent, &left))
            ;
    }
    void TearDown() override {
        while (job_running())
            end_job();
        theConsole = nullptr;
        doQuit = aeQuit = inBackground = 0;
    }

    // A received event of the formats request, handled as the loop does.
    static void handle_event() {
        AppleEvent event;
        MakeReceivedEvent(four("QUIL"), four("frmt"), &event);
        ASSERT_EQ(QueueReceivedEvent(&event, [](OSErr, const AppleEvent *) {}), 1);
        EventRecord record;
        ASSERT_EQ(GetNextEvent(highLevelEventMask, &record), 1);
        DoEvent(&record);
    }

    test::TemporaryHome home_;
    test::RecordingFront recorded_;
    static Front changed;
};
Front Waits::changed;

TEST_F(Waits, AWaitForUpdatesHandlesAllOfThemAndGivesZero) {
    for (int i = 0; i < 3; i++)
        PostEvent(updateEvt, 0, 0, {0, 0});
    PostEvent(keyDown, 'x', 0, {0, 0});
    EXPECT_EQ(WaitForUpdate(), 0);
    EXPECT_EQ(told.updates, 3);
    EventRecord left;
    EXPECT_EQ(GetNextEvent(everyEvent, &left), 1);
    EXPECT_EQ(left.what, keyDown);
    EXPECT_EQ(WaitForUpdate(), 0);
}

TEST_F(Waits, AnEventAfterAWishToLeaveSavesTheRecentFilesAndQuits) {
    const std::string path = home_.file("work/x.tex");
    SaveRecentFile(path.c_str());
    handle_event();
    EXPECT_EQ(doQuit, 0);
    EXPECT_EQ(get_str_resource("RECENTFILE1"), nullptr);
    aeQuit = 1;
    handle_event();
    EXPECT_EQ(doQuit, 1);
    EXPECT_STREQ(get_str_resource("RECENTFILE1"), path.c_str());
}

TEST_F(Waits, AWaitIsLongerInTheBackground) {
    main_event(mask_waiting);
    EXPECT_EQ(sleepTime, 10u);
    inBackground = 1;
    main_event(mask_waiting);
    EXPECT_EQ(sleepTime, 60u);
}

TEST_F(Waits, ActivationReachesTheConsole) {
    EventRecord event = {activateEvt, 0, 0, {0, 0}, activeFlag, 0};
    DoEvent(&event);
    event.modifiers = cmdKey;
    DoEvent(&event);
    EXPECT_EQ(told.active, (std::vector{1, 0}));
}

TEST_F(Waits, OnlyTheConsoleGrows) {
    const EventRecord click = {mouseDown, 0, 0, {10, 10}, 0, 0};
    int other = 0;
    part = inGrow;
    hit = reinterpret_cast<WindowRef>(&other);
    DoEvent(&click);
    EXPECT_EQ(told.grown, 0);
    hit = theConsole;
    DoEvent(&click);
    EXPECT_EQ(told.grown, 1);
}

TEST_F(Waits, OnlyTheOutermostJobOpensAndClosesTheGate) {
    begin_job();
    begin_job();
    end_job();
    EXPECT_EQ(job_running(), 1);
    EXPECT_EQ(EventsAreGated(), 1);
    end_job();
    EXPECT_EQ(job_running(), 0);
    EXPECT_EQ(EventsAreGated(), 0);
    EXPECT_EQ(told.admitted, (std::vector{0, 1}));
}

TEST_F(Waits, ACancelFromBeforeAJobIsForgotten) {
    RequestCancel();
    const JobScope scope;
    EXPECT_EQ(CancelRequested(), 0);
}

TEST_F(Waits, TheShellItselfComesForwardThroughItsFront) {
    ProcessSerialNumber self;
    ASSERT_EQ(GetCurrentProcess(&self), noErr);
    EXPECT_EQ(SetFrontProcess(&self), noErr);
    EXPECT_EQ(told.brought, 1);
    // An application that runs already comes to the front only when it is asked to.
    home_.file("own.app/Contents/PkgInfo", "APPLQUIL");
    EXPECT_EQ(DoMyLaunch(home_.path("own.app").c_str(), nullptr, 0), 1);
    EXPECT_EQ(told.brought, 1);
    EXPECT_EQ(DoMyLaunch(home_.path("own.app").c_str(), nullptr, 1), 1);
    EXPECT_EQ(told.brought, 2);
}

TEST_F(Waits, OutOfMemoryIsSaidInAWindowInFrontOnly) {
    changed.run_dialog = [](Dialog *dialog) {
        std::fprintf(stderr, "window %s\n", dialog->name);
        hit_control(dialog, 1);
    };
    const auto end = [](int behind) {
        inBackground = static_cast<std::uint8_t>(behind);
        reserveMemory = nullptr;
        DoJump(-50);
    };
    EXPECT_EXIT(end(0), ::testing::ExitedWithCode(0), "^window alert 900\n$");
    EXPECT_EXIT(end(1), ::testing::ExitedWithCode(0), "^$");
}

} // namespace
} // namespace quillon
