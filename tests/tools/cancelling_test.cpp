// Command-period within a job, and a run in a folder that has gone.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "core/event_loop.h"
#include "files/paths.h"
#include "state/job_scope.h"
#include "state/job_state.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"
#include "tools/processes.h"
#include "tools/tool_call.h"

namespace quillon {
namespace {

class Cancelling : public ::testing::Test {
  protected:
    void SetUp() override {
        home_.preferences("SPACECHAR=31\nDEBUG=0\n");
        space_char = 31;
        inBackground = 0;
        EventRecord left;
        while (GetNextEvent(everyEvent, &left))
            ;
    }

    // A bundle whose program never comes to the bus and does not end when it is asked to.
    std::string deaf_bundle() const {
        home_.file("tools/deaf.app/Contents/PkgInfo", "APPLDeaf");
        const std::string program =
            home_.file("tools/deaf.app/Contents/Linux/deaf",
                       "#!/bin/sh\ntrap '' TERM HUP INT\nexec tail -f /dev/null >/dev/null 2>&1\n");
        chmod(program.c_str(), 0755);
        return home_.path("tools/deaf.app");
    }
    static void press(std::uint32_t key, std::uint16_t modifiers) {
        PostEvent(keyDown, key, modifiers, {0, 0});
    }

    test::TemporaryHome home_;
    test::RecordingFront recorded_;
};

TEST_F(Cancelling, CommandPeriodEndsTheWaitOfASendWithinAJob) {
    const JobScope scope;
    EventRecord event = {nullEvent, 0, 0, {0, 0}, 0, 0};
    std::uint32_t sleep = 0;
    EXPECT_EQ(myIdleProcSend(&event, &sleep), 0);
    press('.', cmdKey);
    EXPECT_EQ(myIdleProcSend(&event, &sleep), 1);
    EXPECT_EQ(myIdleProcSend(&event, &sleep), 0);
}

TEST_F(Cancelling, OtherCommandKeysStayBehindTheJob) {
    EventRecord event = {nullEvent, 0, 0, {0, 0}, 0, 0};
    std::uint32_t sleep = 0;
    {
        const JobScope scope;
        press('t', cmdKey);
        EXPECT_EQ(myIdleProcSend(&event, &sleep), 0);
        EXPECT_EQ(GetNextEvent(keyDownMask, &event), 0);
    }
    EXPECT_EQ(GetNextEvent(keyDownMask, &event), 1);
    EXPECT_EQ(event.message, static_cast<std::uint32_t>('t'));
}

TEST_F(Cancelling, CommandPeriodEndsAToolThatDoesNotGo) {
    const std::string bundle = deaf_bundle();
    ProcessSerialNumber psn;
    ASSERT_EQ(DoMyLaunch(bundle.c_str(), &psn, 0), 2);
    const JobScope scope;
    press('.', cmdKey);
    EXPECT_EQ(KillApp(bundle.c_str()), procNotFound);
    EXPECT_EQ(IsSigRunning(four("Deaf"), nullptr), 0);
}

TEST_F(Cancelling, OnlyAProgramLaunchedFromHereIsEnded) {
    ProcessSerialNumber self;
    GetCurrentProcess(&self);
    EXPECT_EQ(EndProcess(&self), procNotFound);
    EXPECT_EQ(EndProcess(&kNoProcess), procNotFound);
}

TEST_F(Cancelling, ARunInAFolderThatHasGoneIsSaidAndFails) {
    const std::string bundle = deaf_bundle(), folder = home_.path("gone");
    exit_status = 0;
    EXPECT_EQ(CallTool(bundle.c_str(), "deaf x", folder.c_str()), 0);
    EXPECT_EQ(recorded_->printed, "I can't find the folder " + folder + ".\n");
    EXPECT_EQ(exit_status, 1);
    EXPECT_EQ(job_outcome, job_not_run);
    EXPECT_EQ(IsSigRunning(four("Deaf"), nullptr), 0);
}

} // namespace
} // namespace quillon
