#include "tools/processes.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "core/event_loop.h"
#include "settings/settings.h"
#include "state/job_scope.h"
#include "state/job_state.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"

namespace quillon {
namespace {

// Bundles whose programs never come to the bus, so that nothing but launching and ending is looked at.
class Processes : public ::testing::Test {
  protected:
    void SetUp() override {
        home_.preferences("SPACECHAR=31\n");
        check_config();
        inBackground = notifying = 0;
    }

    std::string bundle(const std::string &name, const std::string &signature) {
        return home_.silent_bundle("tools/" + name, signature);
    }

    test::TemporaryHome home_;
    test::RecordingFront front_;
};

TEST_F(Processes, AnApplicationIsLaunchedOnceAndThenFoundRunning) {
    const JobScope scope; // no script steps in the waits
    const std::string app = bundle("sleeper", "SLP1");
    ProcessSerialNumber first = {}, second = {}, third = {};
    EXPECT_EQ(IsSigRunning(four("SLP1"), nullptr), 0);
    ASSERT_EQ(DoMyLaunch(app.c_str(), &first, 1), 2);
    EXPECT_EQ(theOSType, four("SLP1"));
    EXPECT_EQ(myLaunchStuff.launchBlockID, 0x4C43);
    EXPECT_EQ(myLaunchStuff.launchEPBLength, 32u);
    EXPECT_EQ(myLaunchStuff.launchFileFlags, 0);
    EXPECT_EQ(myLaunchStuff.launchControlFlags, 0x4800);
    EXPECT_EQ(myLaunchStuff.launchAppSpec, &launchFileSpec);
    EXPECT_EQ(myLaunchStuff.launchAppParameters, &myHLEvent);
    EXPECT_EQ(myHLEvent.theMsgEvent.what, kHighLevelEvent);
    EXPECT_EQ(myHLEvent.theMsgEvent.message, four("aevt"));
    EXPECT_EQ(high_level_event_id(myHLEvent.theMsgEvent), four("oapp"));
    EXPECT_EQ(DoMyLaunch(app.c_str(), &second, 1), 1);
    EXPECT_TRUE(SameProcess(&first, &second));
    EXPECT_EQ(IsSigRunning(four("SLP1"), &third), 1);
    EXPECT_TRUE(SameProcess(&first, &third));
    EXPECT_EQ(KillApp(app.c_str()), -600);
    EXPECT_EQ(IsSigRunning(four("SLP1"), nullptr), 0);
    EXPECT_EQ(front_->printed, "");
}

TEST_F(Processes, AnApplicationThatIsToStayBehindIsLaunchedSo) {
    const JobScope scope;
    const std::string app = bundle("behind", "SLP2");
    ASSERT_EQ(DoMyLaunch(app.c_str(), nullptr, 0), 2);
    EXPECT_EQ(myLaunchStuff.launchControlFlags, 0x4A00);
    EXPECT_EQ(DoMyLaunch(app.c_str(), nullptr, 0), 1);
    EXPECT_EQ(KillApp(app.c_str()), -600);
}

TEST_F(Processes, AnApplicationThatDoesNotRunIsGoneAtOnce) {
    EXPECT_EQ(KillApp(bundle("idle", "SLP3").c_str()), -600);
    EXPECT_EQ(KillApp(home_.path("tools/none.app").c_str()), 0);
    EXPECT_EQ(DoMyLaunch(home_.path("tools/none.app").c_str(), nullptr, 1), 0);
    EXPECT_EQ(front_->printed, "");
}

TEST_F(Processes, AProgramThatCannotBeStartedIsAnOops) {
    const std::string app = bundle("broken", "SLP4");
    chmod((app + "/Contents/Linux/broken").c_str(), 0644);
    EXPECT_EQ(DoMyLaunch(app.c_str(), nullptr, 1), 0);
    EXPECT_EQ(front_->printed, "Oops!!\n");
}

TEST_F(Processes, ANotificationIsPostedOnceAndOnlyFromTheBackground) {
    DoNotify();
    EXPECT_EQ(notifying, 0);
    inBackground = 1;
    DoNotify();
    EXPECT_EQ(notifying, 1);
    EXPECT_EQ(gNotifyRec.qType, 8);
    EXPECT_EQ(gNotifyRec.nmMark, 1);
    EXPECT_EQ(gNotifyRec.nmIcon, four("SICN"));
    EXPECT_EQ(gNotifyRec.nmSound, -1);
    gNotifyRec.nmRefCon = 5;
    DoNotify();
    EXPECT_EQ(gNotifyRec.nmRefCon, 5); // not posted anew
}

TEST_F(Processes, AQuitRequestsWaitDropsEveryOtherKey) {
    EventRecord none = {};
    std::uint32_t sleep = 0;
    PostEvent(keyDown, 'x', 0, {0, 0});
    EXPECT_EQ(myIdleProcSend(&none, &sleep), 0);
    EXPECT_EQ(sleep, 15u);
    PostEvent(keyDown, '.', cmdKey, {0, 0});
    EXPECT_EQ(myIdleProcSend(&none, &sleep), 1);
    EventRecord left;
    EXPECT_EQ(GetNextEvent(keyDownMask, &left), 0);
    myIdleProcRec(&none, &sleep);
    EXPECT_EQ(sleep, GetDblTime());
}

TEST_F(Processes, TheToolsWaitEndsWhenTheToolHasGone) {
    EventRecord none = {};
    std::uint32_t sleep = 0;
    toolSig = four("GONE");
    EXPECT_EQ(myIdleToolProcSend(&none, &sleep), 1);
}

TEST_F(Processes, SignaturesAsText) {
    OSType signature = 0;
    StringToOSType("PXETmore", &signature);
    EXPECT_EQ(signature, four("PXET"));
    PrintOSType(signature);
    EXPECT_EQ(front_->printed, "Application signature = <PXET>.\n");
}

} // namespace
} // namespace quillon
