#include "tools/tool_call.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "console/window.h"
#include "core/event_loop.h"
#include "files/paths.h"
#include "state/job_scope.h"
#include "state/job_state.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"
#include "toolbox/received_events.h"
#include "tools/processes.h"
#include "tools/tool_runs.h"

namespace quillon {
namespace {

int activated = 0;

// Bundles whose programs never come to the bus, and reports made by the test.
class ToolCalls : public ::testing::Test {
  protected:
    void SetUp() override {
        home_.preferences("SPACECHAR=31\nDEBUG=0\n");
        inBackground = tex_error = calleditor = 0;
        space_char = 31;
        exit_status = 7;
        job_outcome = job_not_run;
        EventRecord left;
        while (GetNextEvent(everyEvent, &left))
            ;
    }
    void TearDown() override {
        inBackground = tex_error = calleditor = 0;
        theConsole = nullptr;
    }

    std::string bundle(const std::string &name, const std::string &signature) const {
        return home_.silent_bundle("tools/" + name, signature);
    }
    static OSType code(const std::string &text) {
        OSType signature = 0;
        StringToOSType(text.c_str(), &signature);
        return signature;
    }
    static AppleEvent report(std::int32_t status) {
        AppleEvent event;
        MakeReceivedEvent(four("aevt"), four("ansr"), &event);
        put(event, keyDirectObject, status);
        return event;
    }
    static void put(AppleEvent &event, OSType keyword, std::int32_t value) {
        AEPutParamPtr(&event, keyword, typeLongInteger, &value, sizeof value);
    }
    // Waits until no process has the signature. Returns 0 when one still runs after ten seconds.
    static int ends(OSType signature) {
        const std::uint32_t start = TickCount();
        while (IsSigRunning(signature, nullptr) && TickCount() - start < 600)
            main_event(mask_waiting);
        return !IsSigRunning(signature, nullptr);
    }
    // Makes a transcript in the folder of the tools' transcripts.
    FSSpec transcript(const std::string &contents) const {
        home_.folder("cache/quillon");
        chmod(home_.path("cache/quillon").c_str(), 0700);
        home_.file("cache/quillon/log", contents);
        FSSpec spec;
        EXPECT_EQ(UnixToFSS(home_.path("cache/quillon").c_str(), "log", &spec), 1);
        return spec;
    }

    test::TemporaryHome home_;
    test::RecordingFront front_;
};

TEST_F(ToolCalls, AnEngineThatFailedIsQuitAndItsErrorKept) {
    const JobScope scope; // no script steps in the waits
    for (const char *const engine : {"*Xet", "eXet", "PXET", "PxET"}) {
        const std::string name =
            "engine" + std::to_string(static_cast<unsigned char>(engine[0]) * 256 + engine[1]);
        ASSERT_EQ(DoMyLaunch(bundle(name, engine).c_str(), nullptr, 1), 2);
        AppleEvent reply = report(1);
        put(reply, four("iden"), static_cast<std::int32_t>(code(engine)));
        tex_error = 0;
        ProcessReply(&reply);
        EXPECT_EQ(tex_error, 1) << engine;
        EXPECT_EQ(exit_status, 1);
        EXPECT_EQ(ends(code(engine)), 1) << engine;
        AEDisposeDesc(&reply);
    }
}

TEST_F(ToolCalls, AnEngineThatEndedWellIsQuitAndLeavesNoError) {
    const JobScope scope;
    ASSERT_EQ(DoMyLaunch(bundle("engine", "PXET").c_str(), nullptr, 1), 2);
    AppleEvent reply = report(0);
    put(reply, four("iden"), static_cast<std::int32_t>(code("PXET")));
    ProcessReply(&reply);
    EXPECT_EQ(tex_error, 0);
    EXPECT_EQ(exit_status, 0);
    EXPECT_EQ(ends(code("PXET")), 1);
    AEDisposeDesc(&reply);
}

TEST_F(ToolCalls, ACompanionThatFailedIsQuitAndIsNoErrorOfTeX) {
    const JobScope scope;
    for (const char *const signature : {"dvps", "PXEt", "pXET"}) {
        ASSERT_EQ(DoMyLaunch(bundle(std::string("companion") + signature, signature).c_str(), nullptr, 1), 2);
        AppleEvent reply = report(1);
        put(reply, four("iden"), static_cast<std::int32_t>(code(signature)));
        ProcessReply(&reply);
        EXPECT_EQ(tex_error, 0) << signature;
        EXPECT_EQ(exit_status, 1);
        EXPECT_EQ(ends(code(signature)), 1) << signature;
        AEDisposeDesc(&reply);
    }
}

TEST_F(ToolCalls, TheEditorIsCalledForAnyNumberButZero) {
    for (const std::int32_t asked : {0, 1, 2, -1}) {
        AppleEvent reply = report(1);
        put(reply, four("edit"), asked);
        calleditor = 0;
        ProcessReply(&reply);
        EXPECT_EQ(calleditor, asked != 0) << asked;
        calleditor = 0;
        front_->printed.clear();
        EXPECT_EQ(HandleReply(&reply, nullptr, 0), noErr);
        EXPECT_EQ(calleditor, asked != 0) << asked;
        EXPECT_EQ(front_->printed, asked ? "\nUse any text editor to edit \nat line number 0.\n" : "");
        AEDisposeDesc(&reply);
    }
    AppleEvent silent = report(1);
    calleditor = 0;
    ProcessReply(&silent);
    EXPECT_EQ(calleditor, 0);
    AEDisposeDesc(&silent);
}

TEST_F(ToolCalls, ACancelledRunSaysSoBelowItsTranscript) {
    FSSpec log = transcript("so far\r");
    AppleEvent event = report(1);
    AEPutParamPtr(&event, four("logf"), typeFSS, &log, sizeof log);
    EXPECT_EQ(HandleExit(&event, nullptr, 0), noErr);
    EXPECT_EQ(front_->printed, "so far\n\nProcessing cancelled by user.\n\n");
    EXPECT_EQ(job_outcome, job_cancelled);
    EXPECT_FALSE(std::filesystem::exists(home_.path("cache/quillon/log")));
    AEDisposeDesc(&event);
}

TEST_F(ToolCalls, ACancelReportAfterTheReplySaysNothing) {
    AppleEvent event = report(1);
    job_outcome = job_done;
    EXPECT_EQ(HandleExit(&event, nullptr, 0), noErr);
    EXPECT_EQ(front_->printed, "");
    EXPECT_EQ(job_outcome, job_done);
    AEDisposeDesc(&event);
}

TEST_F(ToolCalls, AToolThatCannotBeReachedIsNotRun) {
    const JobScope scope;
    const std::string tool = bundle("silent", "SLNT");
    EXPECT_EQ(CallTool(tool.c_str(), "silent x", home_.path("work").c_str()), 0);
    EXPECT_EQ(job_outcome, job_not_run);
    EXPECT_EQ(exit_status, 7);
    EXPECT_EQ(front_->printed, "");
    EXPECT_EQ(KillApp(tool.c_str()), procNotFound);
    EXPECT_EQ(CallTool(home_.path("none.app").c_str(), "none", "/"), 0);
    EXPECT_EQ(front_->printed,
              "I can't find " + home_.path("none.app") + ". It should be in the binaries foldeer.\n");
}

TEST_F(ToolCalls, AProgramThatHasGoneIsNotFound) {
    const JobScope scope;
    const std::string tool = bundle("gone", "GON1");
    ASSERT_EQ(DoMyLaunch(tool.c_str(), nullptr, 1), 2);
    EXPECT_EQ(KillApp(tool.c_str()), procNotFound);
    EXPECT_EQ(IsSigRunning(code("GON1"), nullptr), 0);
    EXPECT_EQ(KillApp(tool.c_str()), procNotFound);
    EXPECT_EQ(front_->printed, "");
}

TEST_F(ToolCalls, AnApplicationWhosePathDoesNotFitIsNotFound) {
    // The path is so long that the ":" behind it no longer fits.
    std::string below = "work";
    const std::size_t length = 1024;
    while (home_.path(below).size() + 202 < length)
        below += "/" + std::string(100, 'd');
    below += "/" + std::string(length - 1 - home_.path(below).size() - 100, 'e') + "/" + std::string(99, 'p');
    const std::string program = home_.file(below, "#!/bin/sh\n");
    ASSERT_EQ(program.size(), length);
    chmod(program.c_str(), 0755);
    EXPECT_EQ(DoMyLaunch(program.c_str(), nullptr, 1), 0);
    EXPECT_EQ(front_->printed, "Application not found: <" + program + ">.\n");
}

TEST_F(ToolCalls, AnApplicationOfAnEarlierSystemIsLaunchedItself) {
    const JobScope scope;
    const std::string app = bundle("transfer", "TRNS");
    haveosx = 0;
    EXPECT_EQ(DoTransfer(app.c_str()), 1);
    EXPECT_EQ(DoTransfer(app.c_str()), 1); // it runs already
    EXPECT_EQ(DoTransfer(home_.path("none.app").c_str()), 0);
    EXPECT_EQ(KillApp(app.c_str()), procNotFound);
    haveosx = 1;
}

TEST_F(ToolCalls, OnlyAShellInFrontTakesTheKeyThatCancels) {
    const JobScope scope;
    const std::string app = bundle("slow", "SLOW");
    ASSERT_EQ(DoMyLaunch(app.c_str(), nullptr, 1), 2);
    toolSig = code("SLOW");
    EventRecord none = {};
    std::uint32_t sleep = 0;
    PostEvent(keyDown, '.', cmdKey, {0, 0});
    inBackground = 1;
    EXPECT_EQ(myIdleToolProcSend(&none, &sleep), 0);
    EXPECT_EQ(sleep, 15u);
    EXPECT_EQ(job_outcome, job_not_run);
    inBackground = 0;
    EXPECT_EQ(myIdleToolProcSend(&none, &sleep), 1);
    EXPECT_EQ(job_outcome, job_cancelled);
    EXPECT_EQ(KillApp(app.c_str()), procNotFound);
}

TEST_F(ToolCalls, RedrawsAndActivationHappenDuringAWait) {
    static Front changed;
    changed = *front;
    activated = 0;
    changed.text_update = [](int) { activated += 1; };
    changed.text_focus = [](int, int active) { activated += active > 0 ? 100 : 0; };
    theConsole = FrontWindow();
    front = &changed;
    std::uint32_t sleep = 3;
    EventRecord event = {updateEvt, 0, 0, {0, 0}, 0, 0};
    EXPECT_EQ(myIdleProcRec(&event, &sleep), 0);
    EXPECT_EQ(activated, 1);
    event = {activateEvt, 0, 0, {0, 0}, activeFlag, 0};
    EXPECT_EQ(myIdleProcRec(&event, &sleep), 0);
    EXPECT_EQ(activated, 101);
    event = {keyDown, 'x', 0, {0, 0}, 0, 0};
    EXPECT_EQ(myIdleProcRec(&event, &sleep), 0);
    EXPECT_EQ(activated, 101);
    EXPECT_EQ(front_->printed, "");
    EXPECT_EQ(sleep, 3u);
}

TEST_F(ToolCalls, EveryCompanionIsItsOwnToolStartedAnewAndQuit) {
    const JobScope scope;
    const struct {
        BoundedBuffer &path;
        const char *name, *signature;
        void (*run)();
    } companions[] = {
        {dvipsexe, "dvips", "CMP1", DoDvipsAppleScript},
        {bibexe, "bibtex", "CMP2", DoBibtexAppleScript},
        {mkexe, "makeindex", "CMP3", DoMakeindexAppleScript},
        {mpostexe, "mpost", "CMP4", DoMpostAppleScript},
        {dvipdfmexe, "dvipdfm", "CMP5", DoDvipdfmAppleScript},
    };
    for (const auto &companion : companions)
        companion.path.copy(bundle(companion.name, companion.signature));
    for (const auto &companion : companions) {
        // A tool that already runs must not take part.
        ProcessSerialNumber before = {};
        ASSERT_EQ(DoMyLaunch(companion.path.c_str(), &before, 1), 2);
        companion.run();
        EXPECT_EQ(toolSig, code(companion.signature)) << companion.name;
        EXPECT_FALSE(SameProcess(&before, &myLaunchStuff.launchProcessSN)) << companion.name;
        EXPECT_EQ(IsSigRunning(code(companion.signature), nullptr), 0) << companion.name;
    }
    EXPECT_EQ(front_->printed, "");
    for (const auto &companion : companions) {
        companion.path.copy(home_.path("none.app"));
        front_->printed.clear();
        companion.run();
        EXPECT_EQ(front_->printed,
                  "I can't find " + std::string(companion.name) + ". It should be in the binaries folder.\n");
        companion.path.clear();
    }
}

} // namespace
} // namespace quillon
