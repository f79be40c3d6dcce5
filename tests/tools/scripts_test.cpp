// The script runner over the real component, with no bus that could carry an event.
#include "tools/scripts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "state/job_scope.h"
#include "state/job_state.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"
#include "tools/processes.h"
#include "viewers/editor.h"

namespace quillon {
namespace {

class Scripts : public ::testing::Test {
  protected:
    void SetUp() override {
        home_.preferences("SPACECHAR=31\nDEBUG=0\n");
        space_char = 31;
        cmd.clear();
        DisposeCScript();
    }
    void TearDown() override {
        DisposeCScript();
        ProcessSerialNumber psn = kNoProcess;
        while (GetNextProcess(&psn) == noErr && !IsPlainProcess(&psn))
            EndProcess(&psn);
    }
    // What GetScriptErrorInfo prints.
    std::string error_info() {
        front_->printed.clear();
        GetScriptErrorInfo();
        return front_->printed;
    }
    // How many more components can be open.
    static std::size_t unused_components() {
        std::vector<ComponentInstance> open;
        while (const ComponentInstance one = OpenDefaultComponent(kOSAComponentType, kAppleScriptSubtype))
            open.push_back(one);
        for (const ComponentInstance one : open)
            CloseComponent(one);
        return open.size();
    }

    test::TemporaryHome home_;
    test::RecordingFront front_;
};

} // namespace

TEST_F(Scripts, TheTwoTextsAreTheseToTheLetter) {
    EXPECT_EQ(callScript2alt("/vol/apps/one.app"), 0);
    EXPECT_EQ(cmd.view(), "tell application \"vol:apps:one.app\"\r\t\t\t\tactivate\r\t\t\t\tend tell\r");
    EXPECT_EQ(callScript3("/vol/apps/one.app", 12), 0);
    EXPECT_EQ(cmd.view(), "tell application \"vol:apps:one.app\"\r\t\t\t\tselect display_line 12 of text "
                          "window 1\r\t\t\tend tell\r");
    EXPECT_EQ(front_->printed, "");
}

TEST_F(Scripts, TheComponentTakesBothTexts) {
    for (const std::string &text :
         {std::string("tell application \"none:x\"\r\t\t\t\tactivate\r\t\t\t\tend tell\r"),
          std::string(
              "tell application \"none:x\"\r\t\t\t\tselect display_line 12 of text window 1\r\t\t\tend "
              "tell\r")}) {
        EXPECT_EQ(CScript(text.c_str()), errOSAScriptError);
        // It is the application that is missing.
        EXPECT_EQ(error_info(),
                  "Error code = -1728\nError Message: The application \"none:x\" cannot be found.\n");
    }
}

TEST_F(Scripts, BlanksQuotesAndBackslashesOfAPathComeThrough) {
    BoundedString<64> path;
    EXPECT_EQ(script_path("/vol/a\x1F\"b\"\\c", path), 1);
    EXPECT_EQ(path.view(), "vol:a \\\"b\\\"\\\\c");
    const JobScope scope;
    std::string app = home_.silent_bundle("apps/a \"b\" \\c", "SCQT");
    std::replace(app.begin(), app.end(), ' ', '\x1F');
    callScript2alt(app.c_str());
    EXPECT_EQ(IsSigRunning(four("SCQT"), nullptr), 1);
}

TEST_F(Scripts, APathThatDoesNotFitRunsNoScript) {
    BoundedString<8> narrow;
    EXPECT_EQ(script_path("/a/\"\"\"", narrow), 0);
    EXPECT_EQ(script_path("/a/\"\"", narrow), 1);
    const std::string longest = "/" + std::string(1023, '"'), longer = longest + "x";
    cmd.copy("beep");
    callScript2alt(longer.c_str());
    callScript3(longer.c_str(), 1);
    EXPECT_EQ(cmd.view(), "beep");
    EXPECT_EQ(gScriptingComponent, 0u);
    // The longest path fits with a backslash before each of its bytes.
    callScript3(longest.c_str(), -2147483647);
    EXPECT_EQ(cmd.length(),
              std::string("tell application \"\"\r\t\t\t\tselect display_line -2147483647 of text "
                          "window 1\r\t\t\tend tell\r")
                      .size() +
                  2046);
}

TEST_F(Scripts, AScriptOpensTheComponentAndLeavesItOpen) {
    EXPECT_EQ(gScriptingComponent, 0u);
    EXPECT_EQ(CScript("tell application \"a:b\"\rend tell"), noErr);
    const ComponentInstance component = gScriptingComponent;
    EXPECT_NE(component, 0u);
    EXPECT_EQ(gMySendProc, MySendProc);
    EXPECT_NE(oldSendProc, nullptr);
    EXPECT_NE(oldSendProc, MySendProc);
    EXPECT_EQ(refCon, 0);
    EXPECT_EQ(CScript("beep"), errOSAScriptError);
    EXPECT_EQ(gScriptingComponent, component);
    OSASendProc installed = nullptr;
    std::int32_t number = 1;
    EXPECT_EQ(OSAGetSendProc(component, &installed, &number), noErr);
    EXPECT_EQ(installed, MySendProc);
    EXPECT_EQ(number, 0);
    EXPECT_EQ(DisposeCScript(), noErr);
    EXPECT_EQ(gScriptingComponent, 0u);
    EXPECT_EQ(gMySendProc, nullptr);
    EXPECT_EQ(CloseComponent(component), badComponentInstance);
    EXPECT_EQ(DisposeCScript(), noErr);
}

TEST_F(Scripts, AScriptOfAnApplicationOpensAndClosesTheComponent) {
    const std::size_t unused = unused_components();
    callScript2alt("/none/x");
    EXPECT_EQ(gScriptingComponent, 0u);
    EXPECT_EQ(gMySendProc, nullptr);
    callScript3("/none/x", 3);
    EXPECT_EQ(gScriptingComponent, 0u);
    EXPECT_EQ(unused_components(), unused);
}

TEST_F(Scripts, WithoutAComponentNothingIsPrinted) {
    std::vector<ComponentInstance> open;
    while (const ComponentInstance one = OpenDefaultComponent(kOSAComponentType, kAppleScriptSubtype))
        open.push_back(one);
    EXPECT_EQ(InitCScript(), -1);
    EXPECT_EQ(gScriptingComponent, 0u);
    EXPECT_EQ(CScript("beep"), -1);
    EXPECT_EQ(callScript2alt("/none/x"), 0);
    EXPECT_EQ(callScript3("/none/x", 1), 0);
    EXPECT_EQ(cmd.view(), "");
    EXPECT_EQ(front_->printed, "");
    for (const ComponentInstance one : open)
        CloseComponent(one);
}

TEST_F(Scripts, AComponentThatWasClosedElsewhereStaysUntilItIsDisposedOf) {
    ASSERT_EQ(InitCScript(), noErr);
    const ComponentInstance component = gScriptingComponent;
    ASSERT_EQ(CloseComponent(component), noErr);
    EXPECT_EQ(CScript("beep"), badComponentInstance);
    EXPECT_EQ(gScriptingComponent, component);
    EXPECT_EQ(error_info(), "Error code = 0\nError Message: \n");
    EXPECT_EQ(DisposeCScript(), badComponentInstance);
    EXPECT_EQ(gScriptingComponent, 0u);
}

TEST_F(Scripts, AComponentThatIsOpenAlreadyIsNotClosedByTheNextOpening) {
    const std::size_t unused = unused_components();
    ASSERT_EQ(InitCScript(), noErr);
    const ComponentInstance first = gScriptingComponent;
    callScript2alt("/none/x");
    EXPECT_EQ(gScriptingComponent, 0u);
    EXPECT_EQ(unused_components(), unused - 1);
    EXPECT_EQ(CloseComponent(first), noErr);
}

TEST_F(Scripts, TheErrorOfTheLastScriptIsPrinted) {
    EXPECT_EQ(error_info(), "Error code = 0\nError Message: \n");
    EXPECT_EQ(CScript("beep"), errOSAScriptError);
    EXPECT_EQ(error_info(), "Error code = -2741\nError Message: Expected \"tell\" but found \"beep\".\n");
    EXPECT_EQ(CScript("tell application \"x"), errOSAScriptError);
    EXPECT_EQ(error_info(), "Error code = -2740\nError Message: The script ends within quotes.\n");
    const JobScope scope;
    home_.silent_bundle("apps/silent", "SCSL");
    const std::string path = home_.mac("apps/silent.app");
    EXPECT_EQ(CScript(("tell application \"" + path + "\"\ractivate\rend tell").c_str()), errOSAScriptError);
    EXPECT_EQ(error_info(),
              "Error code = -609\nError Message: The application \"" + path + "\" gave the error -609.\n");
    EXPECT_EQ(CScript("tell application \"x\"\rend tell"), noErr);
    EXPECT_EQ(error_info(), "Error code = 0\nError Message: \n");
}

TEST_F(Scripts, OnlyTheEventsThatAskForDataKeepTheRecordingBit) {
    for (const OSType id : {four("getd"), four("gdte")}) {
        EXPECT_EQ(script_send_mode(id, kAEWaitReply | kAEDontRecord), kAEWaitReply | kAEDontRecord);
        EXPECT_EQ(script_send_mode(id, kAEWaitReply), int{kAEWaitReply});
    }
    for (const OSType id : {four("actv"), four("slct"), four("????"), four("GETD"), OSType{0}}) {
        EXPECT_EQ(script_send_mode(id, kAENoReply | kAECanSwitchLayer | kAEDontRecord),
                  kAENoReply | kAECanSwitchLayer);
        EXPECT_EQ(script_send_mode(id, kAENoReply), int{kAENoReply});
    }
}

TEST_F(Scripts, AnExecEventIsNotSentToWhatCannotBeLaunched) {
    EXPECT_EQ(SendAppleScript(home_.path("none.app").c_str(), "tex x", home_.path("work").c_str()), 0);
    home_.file("apps/empty.app/Contents/PkgInfo", "APPLSCEM");
    EXPECT_EQ(SendAppleScript(home_.path("apps/empty.app").c_str(), "tex x", home_.path("work").c_str()), 0);
    EXPECT_EQ(front_->printed, "Oops!!\n");
}

} // namespace quillon
