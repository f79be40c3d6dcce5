// The script runner and the shell commands over a toolbox that fails where the test says.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "state/job_scope.h"
#include "state/job_state.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"
#include "tools/processes.h"
#include "tools/scripts.h"
#include "tools/shell_commands.h"
#include "tools/twin/toolbox_twin.h"
#include "viewers/editor.h"

namespace quillon {
namespace {

using test::twin;
using Calls = std::vector<std::string>;

class Runner : public ::testing::Test {
  protected:
    void SetUp() override {
        twin = {};
        gScriptingComponent = 0;
        oldSendProc = gMySendProc = nullptr;
        refCon = 0;
        cmd.clear();
        forget_functions();
    }
    void TearDown() override {
        forget_functions();
        gScriptingComponent = 0;
    }
    static void forget_functions() {
        BSDfread = nullptr;
        BSDpopenFunc = nullptr;
        BSDpclose = nullptr;
        BSDfgetc = nullptr;
        BSDfgets = nullptr;
        BSDchdir = nullptr;
    }

    test::TemporaryHome home_;
    test::RecordingFront front_;
};

int idle_of_the_component(EventRecord *, std::uint32_t *) {
    return 0;
}

int filter_of_the_component(EventRecord *, std::int32_t, std::int32_t, const AEDesc *) {
    return 0;
}

} // namespace

TEST_F(Runner, TheComponentIsOpenedAndGetsTheRunnersSendProcedure) {
    EXPECT_EQ(InitCScript(), noErr);
    EXPECT_EQ(twin.calls, (Calls{"open osa  ascr", "get 7", "set 7 0"}));
    EXPECT_EQ(gScriptingComponent, 7u);
    EXPECT_EQ(oldSendProc, test::own_send);
    EXPECT_EQ(refCon, 33);
    EXPECT_EQ(gMySendProc, MySendProc);
    EXPECT_EQ(twin.installed, gMySendProc);
}

TEST_F(Runner, WithoutAComponentTheErrorIsMinusOne) {
    twin.component = 0;
    EXPECT_EQ(InitCScript(), -1);
    EXPECT_EQ(CScript("x"), -1);
    EXPECT_EQ(twin.calls, (Calls{"open osa  ascr", "open osa  ascr"}));
    EXPECT_EQ(callScript2alt("/vol/x"), 0);
    EXPECT_EQ(callScript3("/vol/x", 1), 0);
    EXPECT_EQ(twin.calls.size(), 4u);
    EXPECT_EQ(front_->printed, "");
}

TEST_F(Runner, AComponentThatIsClosedOnFailureStaysInTheVariable) {
    twin.get_result = -1750;
    EXPECT_EQ(InitCScript(), -1750);
    EXPECT_EQ(twin.calls, (Calls{"open osa  ascr", "get 7", "close 7"}));
    EXPECT_EQ(gScriptingComponent, 7u);
    EXPECT_EQ(gMySendProc, nullptr);
    twin = {};
    twin.set_result = -1751;
    EXPECT_EQ(InitCScript(), -1751);
    EXPECT_EQ(twin.calls, (Calls{"open osa  ascr", "get 7", "set 7 0", "close 7"}));
    EXPECT_EQ(gScriptingComponent, 7u);
    EXPECT_EQ(gMySendProc, MySendProc);
    // So the next script does not open it again.
    twin = {};
    twin.run_result = badComponentInstance;
    EXPECT_EQ(CScript("x"), badComponentInstance);
    EXPECT_EQ(twin.calls, (Calls{"run 7 TEXT <x> 0 0"}));
}

TEST_F(Runner, AScriptIsRunAndItsResultDisposedOf) {
    twin.script_result = 5;
    EXPECT_EQ(CScript("say \"x\"\r"), noErr);
    EXPECT_EQ(twin.calls,
              (Calls{"open osa  ascr", "get 7", "set 7 0", "run 7 TEXT <say \"x\"\r> 0 0", "dispose 7 5"}));
    twin.calls.clear();
    EXPECT_EQ(CScript(""), noErr);
    EXPECT_EQ(twin.calls, (Calls{"run 7 TEXT <> 0 0", "dispose 7 5"}));
}

TEST_F(Runner, OfAScriptThatFailedNothingIsDisposedOf) {
    gScriptingComponent = 8;
    twin.run_result = errOSAScriptError;
    EXPECT_EQ(CScript("x"), errOSAScriptError);
    EXPECT_EQ(twin.calls, (Calls{"run 8 TEXT <x> 0 0"}));
    EXPECT_EQ(front_->printed, "");
}

TEST_F(Runner, ClosingGivesTheResultOfTheClosing) {
    EXPECT_EQ(DisposeCScript(), noErr);
    EXPECT_EQ(twin.calls, Calls{});
    ASSERT_EQ(InitCScript(), noErr);
    twin.calls.clear();
    twin.close_result = -3000;
    EXPECT_EQ(DisposeCScript(), -3000);
    EXPECT_EQ(twin.calls, Calls{"close 7"});
    EXPECT_EQ(gScriptingComponent, 0u);
    EXPECT_EQ(gMySendProc, nullptr);
}

TEST_F(Runner, TheComponentIsOpenedAndClosedAroundEachScriptOfAnApplication) {
    for (const OSStatus result : {OSStatus{noErr}, OSStatus{errOSAScriptError}}) {
        twin = {};
        twin.run_result = result;
        EXPECT_EQ(callScript2alt("/vol/x"), 0);
        Calls expected = {"open osa  ascr", "get 7", "set 7 0",
                          "run 7 TEXT <tell application \"vol:x\"\r\t\t\t\tactivate\r\t\t\t\tend tell\r> 0 0",
                          "close 7"};
        if (result == noErr)
            expected.insert(expected.end() - 1, "dispose 7 0");
        EXPECT_EQ(twin.calls, expected);
    }
    twin = {};
    EXPECT_EQ(callScript3("/vol/x", 9), 0);
    EXPECT_EQ(twin.calls, (Calls{"open osa  ascr", "get 7", "set 7 0",
                                 "run 7 TEXT <tell application \"vol:x\"\r\t\t\t\tselect display_line 9 of "
                                 "text window 1\r\t\t\tend tell\r> 0 0",
                                 "dispose 7 0", "close 7"}));
}

TEST_F(Runner, TheErrorIsAskedForAsANumberAndATextOf255Bytes) {
    gScriptingComponent = 7;
    twin.error_number = -32000;
    twin.error_message = std::string(300, 'm');
    GetScriptErrorInfo();
    EXPECT_EQ(twin.calls, (Calls{"error 7 errn shor", "error 7 errs TEXT"}));
    EXPECT_EQ(front_->printed, "Error code = -32000\nError Message: " + std::string(255, 'm') + "\n");
}

TEST_F(Runner, AnEventOfAScriptGoesOutAsItIsButForTheRecordingBit) {
    AEDesc target;
    AppleEvent event, reply;
    AECreateDesc(typeApplSignature, "xxxx", 4, &target);
    ASSERT_EQ(InitCScript(), noErr);
    for (const auto &[id, kept] : {std::pair{"getd", 1}, std::pair{"gdte", 1}, std::pair{"actv", 0},
                                   std::pair{"slct", 0}, std::pair{"setd", 0}}) {
        SCOPED_TRACE(id);
        OSType code = 0;
        StringToOSType(id, &code);
        AECreateAppleEvent(four("core"), code, &target, -1, 0, &event);
        twin.calls.clear();
        twin.send_result = -1712;
        EXPECT_EQ(MySendProc(&event, &reply, kAENoReply | kAECanInteract | kAEDontRecord, 5, 77,
                             idle_of_the_component, filter_of_the_component, 99),
                  -1712);
        EXPECT_EQ(twin.calls, Calls{"send"}); // and not the component's own procedure
        EXPECT_EQ(twin.event, &event);
        EXPECT_EQ(twin.reply, &reply);
        EXPECT_EQ(twin.mode, kAENoReply | kAECanInteract | (kept ? int{kAEDontRecord} : 0));
        EXPECT_EQ(twin.priority, 5);
        EXPECT_EQ(twin.timeout, 77);
        EXPECT_EQ(twin.idle, idle_of_the_component);
        EXPECT_EQ(twin.filter, filter_of_the_component);
        MySendProc(&event, &reply, kAEWaitReply, 0, 0, nullptr, nullptr, 0);
        EXPECT_EQ(twin.mode, int{kAEWaitReply});
        AEDisposeDesc(&event);
    }
    // What has no id counts as '????'.
    MySendProc(&event, &reply, kAEWaitReply | kAEDontRecord, 0, 0, nullptr, nullptr, 0);
    EXPECT_EQ(twin.mode, int{kAEWaitReply});
    AEDisposeDesc(&target);
}

TEST_F(Runner, AnExecEventHoldsTheCommandAndTheFolderAndWantsNoWait) {
    const JobScope scope;
    home_.preferences("SPACECHAR=31\nDEBUG=0\n");
    const std::string app = home_.silent_bundle("apps/other", "TWEX");
    twin.send_result = connectionInvalid;
    EXPECT_EQ(SendAppleScript(app.c_str(), "tex x", home_.path("work").c_str()), 1);
    EXPECT_EQ(twin.calls, Calls{"send"});
    EXPECT_EQ(twin.mode, int{kAEQueueReply});
    EXPECT_EQ(twin.priority, int{kAEHighPriority});
    EXPECT_EQ(twin.timeout, int{kAEDefaultTimeout});
    EXPECT_EQ(twin.idle, nullptr);
    EXPECT_EQ(twin.filter, nullptr);
    ProcessSerialNumber psn;
    ASSERT_EQ(IsSigRunning(four("TWEX"), &psn), 1);
    EXPECT_EQ(EndProcess(&psn), noErr);
}

TEST_F(Runner, TheSixFunctionsAreLookedUpInThisOrder) {
    EXPECT_EQ(getMachOCalls(), noErr);
    EXPECT_EQ(twin.calls, (Calls{"fread", "popen", "pclose", "fgetc", "fgets", "chdir"}));
    for (void *const function : {reinterpret_cast<void *>(BSDfread), reinterpret_cast<void *>(BSDpopenFunc),
                                 reinterpret_cast<void *>(BSDpclose), reinterpret_cast<void *>(BSDfgetc),
                                 reinterpret_cast<void *>(BSDfgets), reinterpret_cast<void *>(BSDchdir)})
        EXPECT_NE(function, nullptr);
}

TEST_F(Runner, WithoutTheLibraryTheFunctionsStayNull) {
    twin.library = 0;
    EXPECT_EQ(getMachOCalls(), -4960);
    EXPECT_EQ(twin.calls, Calls{});
    for (void *const function : {reinterpret_cast<void *>(BSDfread), reinterpret_cast<void *>(BSDpopenFunc),
                                 reinterpret_cast<void *>(BSDpclose), reinterpret_cast<void *>(BSDfgetc),
                                 reinterpret_cast<void *>(BSDfgets), reinterpret_cast<void *>(BSDchdir)})
        EXPECT_EQ(function, nullptr);
    EXPECT_EQ(front_->printed, "");
}

TEST_F(Runner, AFolderComesBeforeTheCommandAndItsFailureDoesNotCount) {
    ASSERT_EQ(getMachOCalls(), noErr);
    twin.calls.clear();
    EXPECT_EQ(InvokeTool("command 2>&1", "/folder"), 0);
    EXPECT_EQ(twin.calls, (Calls{"chdir /folder", "popen command 2>&1 r"}));
    twin.calls.clear();
    EXPECT_EQ(InvokeTool("command", nullptr), 0);
    EXPECT_EQ(twin.calls, Calls{"popen command r"});
    EXPECT_EQ(front_->printed, "");
}

} // namespace quillon
