// The script component: what it takes and refuses, which events it sends, and to whom.
#include "toolbox/scripts.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <utility>
#include <vector>

#include "linux/events/ae_data.h"
#include "linux/events/plain_programs.h"
#include "linux/events/script_parser.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"
#include "toolbox/processes.h"

namespace quillon {
namespace {

// The send procedure of these tests keeps what it is given and answers what the test says.
struct Sent {
    OSType event_class, event_id;
    std::vector<std::int32_t> lines;
    ProcessSerialNumber target;
    std::int32_t mode, timeout, refcon;
};
std::vector<Sent> sent;
OSErr answer = noErr;
void (*while_sending)(AEIdleProc idle) = nullptr;

OSErr keep(const AppleEvent *event, AppleEvent *, std::int32_t mode, std::int16_t, std::int32_t timeout,
           AEIdleProc idle, AEFilterProc filter, std::int32_t refcon) {
    Sent one = {event->data->event_class, event->data->event_id, {}, {}, mode, timeout, refcon};
    EXPECT_EQ(filter, nullptr);
    EXPECT_EQ(event->data->target.descriptorType, OSType{typeProcessSerialNumber});
    AEGetDescData(&event->data->target, &one.target, sizeof one.target);
    std::int32_t line = 0;
    if (AEGetParamPtr(event, keyDirectObject, typeLongInteger, &line, sizeof line, nullptr) == noErr)
        one.lines.push_back(line);
    EXPECT_EQ(event->data->items.size(), one.lines.size());
    sent.push_back(one);
    if (while_sending)
        while_sending(idle);
    return answer;
}

OSStatus last_number(ComponentInstance component) {
    AEDesc desc;
    std::int16_t number = 1;
    EXPECT_EQ(OSAScriptError(component, kOSAErrorNumber, typeShortInteger, &desc), noErr);
    EXPECT_EQ(AEGetDescData(&desc, &number, sizeof number), noErr);
    AEDisposeDesc(&desc);
    return number;
}

std::string last_message(ComponentInstance component) {
    AEDesc desc;
    EXPECT_EQ(OSAScriptError(component, kOSAErrorMessage, typeChar, &desc), noErr);
    const std::string message(desc.data->bytes.begin(), desc.data->bytes.end());
    AEDisposeDesc(&desc);
    return message;
}

class ScriptComponent : public ::testing::Test {
  protected:
    void SetUp() override {
        sent.clear();
        answer = noErr;
        while_sending = nullptr;
        component_ = OpenDefaultComponent(kOSAComponentType, kAppleScriptSubtype);
        ASSERT_NE(component_, 0u);
        ASSERT_EQ(OSASetSendProc(component_, keep, 42), noErr);
        EventRecord left;
        while (GetNextEvent(everyEvent, &left))
            ;
    }
    void TearDown() override {
        ProcessSerialNumber psn = kNoProcess;
        while (GetNextProcess(&psn) == noErr && !IsPlainProcess(&psn))
            EndProcess(&psn);
        pending_starts.clear();
        CloseComponent(component_);
    }

    OSStatus run(const std::string &script) const {
        AEDesc source;
        OSAID result = 9;
        AECreateDesc(typeChar, script.data(), script.size(), &source);
        const OSStatus status = OSACompileExecute(component_, &source, kOSANullScript, kOSAModeNull, &result);
        EXPECT_EQ(result, OSAID{kOSANullScript});
        AEDisposeDesc(&source);
        return status;
    }
    void refuses(const std::string &script, OSStatus number, const std::string &message) const {
        SCOPED_TRACE(script);
        EXPECT_EQ(run(script), errOSAScriptError);
        EXPECT_EQ(last_number(component_), number);
        EXPECT_EQ(last_message(component_), message);
        EXPECT_EQ(sent.size(), 0u);
    }
    std::string application(const std::string &name) const {
        home_.silent_bundle("apps/" + name, "SCR1");
        return home_.mac("apps/" + name + ".app");
    }
    static std::string tell(const std::string &path, const std::string &body) {
        return "tell application \"" + path + "\"\r" + body + "\rend tell\r";
    }

    ComponentInstance component_ = 0;
    test::TemporaryHome home_;
    test::RecordingFront front_;
};

} // namespace

TEST_F(ScriptComponent, OnlyTheComponentForTheLanguageIsThereEightTimes) {
    EXPECT_EQ(OpenDefaultComponent(four("osa "), four("jscr")), 0u);
    EXPECT_EQ(OpenDefaultComponent(four("imdc"), four("ascr")), 0u);
    std::vector<ComponentInstance> more;
    while (const ComponentInstance another = OpenDefaultComponent(kOSAComponentType, kAppleScriptSubtype))
        more.push_back(another);
    EXPECT_EQ(more.size(), 7u);
    EXPECT_EQ(CloseComponent(more.back()), noErr);
    const ComponentInstance again = OpenDefaultComponent(kOSAComponentType, kAppleScriptSubtype);
    EXPECT_NE(again, 0u);
    EXPECT_NE(again, more.back());
    EXPECT_EQ(CloseComponent(more.back()), badComponentInstance);
    more.back() = again;
    for (const ComponentInstance one : more)
        EXPECT_EQ(CloseComponent(one), noErr);
}

TEST_F(ScriptComponent, AClosedComponentDoesNothing) {
    AEDesc source, error;
    OSAID result = 9;
    OSASendProc procedure = nullptr;
    std::int32_t refcon = 0;
    AECreateDesc(typeChar, "x", 1, &source);
    ASSERT_EQ(CloseComponent(component_), noErr);
    for (const ComponentInstance closed : {component_, ComponentInstance{0}, ComponentInstance{99999}}) {
        EXPECT_EQ(CloseComponent(closed), badComponentInstance);
        EXPECT_EQ(OSAGetSendProc(closed, &procedure, &refcon), badComponentInstance);
        EXPECT_EQ(OSASetSendProc(closed, keep, 0), badComponentInstance);
        EXPECT_EQ(OSACompileExecute(closed, &source, kOSANullScript, kOSAModeNull, &result),
                  badComponentInstance);
        EXPECT_EQ(OSADispose(closed, kOSANullScript), badComponentInstance);
        EXPECT_EQ(OSAScriptError(closed, kOSAErrorNumber, typeShortInteger, &error), badComponentInstance);
    }
    AEDisposeDesc(&source);
}

TEST_F(ScriptComponent, TheSendProcedureIsReplacedAndComesBack) {
    OSASendProc procedure = nullptr, own = nullptr;
    std::int32_t refcon = 0;
    EXPECT_EQ(OSAGetSendProc(component_, &procedure, &refcon), noErr);
    EXPECT_EQ(procedure, keep);
    EXPECT_EQ(refcon, 42);
    EXPECT_EQ(OSASetSendProc(component_, nullptr, 0), noErr);
    EXPECT_EQ(OSAGetSendProc(component_, &own, &refcon), noErr);
    EXPECT_NE(own, nullptr);
    EXPECT_NE(own, keep);
    EXPECT_EQ(refcon, 0);
    // Its own procedure sends: no bus is there that could carry the event.
    EXPECT_EQ(run(tell(application("one"), "activate")), errOSAScriptError);
    EXPECT_EQ(last_number(component_), connectionInvalid);
}

TEST_F(ScriptComponent, ActivateAndSelectGoToTheProcessThatIsLaunchedOnce) {
    const std::string app = application("one");
    EXPECT_EQ(run(tell(app, "activate\rselect display_line 12 of text window 1")), noErr);
    EXPECT_EQ(run(tell(app, "select display_line -3 of text window 1")), noErr);
    ASSERT_EQ(sent.size(), 3u);
    EXPECT_EQ(sent[0].event_id, four("actv"));
    EXPECT_EQ(sent[0].lines, std::vector<std::int32_t>{});
    EXPECT_EQ(sent[1].event_id, four("slct"));
    EXPECT_EQ(sent[1].lines, std::vector<std::int32_t>{12});
    EXPECT_EQ(sent[2].lines, std::vector<std::int32_t>{-3});
    ProcessInfoRec info = {60, nullptr, {}, 0, 0, nullptr};
    for (const Sent &one : sent) {
        EXPECT_EQ(one.event_class, four("misc"));
        EXPECT_EQ(one.mode & 3, kAEWaitReply);
        EXPECT_EQ(one.timeout, kAEDefaultTimeout);
        EXPECT_EQ(one.refcon, 42);
        EXPECT_TRUE(SameProcess(&one.target, &sent[0].target));
    }
    ASSERT_EQ(GetProcessInformation(&sent[0].target, &info), noErr);
    EXPECT_EQ(info.processSignature, four("SCR1"));
    EXPECT_EQ(last_number(component_), 0);
    EXPECT_EQ(last_message(component_), "");
}

TEST_F(ScriptComponent, ABundleElsewhereWithTheSignatureOfOneThatRunsIsThatOne) {
    const std::string one = application("one"), two = application("two");
    EXPECT_EQ(run(tell(one, "activate") + tell(two, "activate")), noErr);
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_TRUE(SameProcess(&sent[0].target, &sent[1].target));
}

TEST_F(ScriptComponent, ALinkToABundleStandsForTheBundle) {
    application("one");
    std::filesystem::create_symlink(home_.path("apps/one.app"), home_.path("apps/link.app"));
    EXPECT_EQ(run(tell(home_.mac("apps/link.app"), "activate")), noErr);
    EXPECT_EQ(sent.size(), 1u);
}

TEST_F(ScriptComponent, SpacingEmptyLinesAndCaseDoNotCount) {
    const std::string app = application("one"), line = "select display_line 7 of text window 1";
    for (const std::string &script :
         {"tell application \"" + app + "\"\n" + line + "\nend tell",
          "\r\n\n  \t\rTELL\tApplication  \"" + app +
              "\" \t\r\n\n\t\tSELECT Display_Line\t7 OF text  WINDOW 1 \n" + "\r\r End\tTELL\t \r\n\n \t",
          "tell application\"" + app + "\"\r\t\t\t\t" + line + "\r\t\t\tend tell\r", tell(app + ":", line),
          tell(app, "") + tell(app, line)}) {
        SCOPED_TRACE(script);
        sent.clear();
        EXPECT_EQ(run(script), noErr) << last_message(component_);
        ASSERT_EQ(sent.size(), 1u);
        EXPECT_EQ(sent[0].lines, std::vector<std::int32_t>{7});
    }
}

TEST_F(ScriptComponent, ABlockWithoutStatementsAsksNothingOfTheApplication) {
    EXPECT_EQ(run(tell("none:none", "")), noErr);
    EXPECT_EQ(sent.size(), 0u);
}

TEST_F(ScriptComponent, AnyByteOfAPathMayStandBetweenTheQuotes) {
    for (const std::string &name :
         {std::string("a \"b\" \\c"), std::string("d\re\nf\tg"), std::string("\xC3\xA9\xFF\x01")}) {
        SCOPED_TRACE(name);
        home_.silent_bundle("apps/" + name, "SCR2");
        std::string escaped;
        for (const char c : name)
            escaped += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
        sent.clear();
        EXPECT_EQ(run(tell(home_.mac("apps/" + escaped + ".app"), "activate")), noErr)
            << last_message(component_);
        EXPECT_EQ(sent.size(), 1u);
    }
}

TEST_F(ScriptComponent, TheSmallestAndTheLargestLineAreTakenAndNoOther) {
    const std::string app = application("one");
    for (const char *const number : {"2147483647", "-2147483648", "0", "007"})
        EXPECT_EQ(run(tell(app, std::string("select display_line ") + number + " of text window 1")), noErr);
    ASSERT_EQ(sent.size(), 4u);
    EXPECT_EQ(sent[0].lines[0], 2147483647);
    EXPECT_EQ(sent[1].lines[0], -2147483647 - 1);
    EXPECT_EQ(sent[3].lines[0], 7);
    sent.clear();
    for (const std::string number : {"2147483648", "-2147483649", "12x", "x", "-", "1-2", "--1"})
        refuses(tell(app, "select display_line " + number + " of text window 1"), OSASyntaxTypeError,
                "Expected a whole number but found \"" + number + "\".");
    refuses(tell(app, "select display_line +1 of text window 1"), OSASyntaxTypeError,
            "Expected a whole number but found \"+\".");
}

TEST_F(ScriptComponent, AnyOtherTextIsRefusedWithAReason) {
    const std::string app = application("one"), begin = "tell application \"" + app + "\"\r";
    const auto wrong = [&](const std::string &script, const std::string &what, const std::string &found) {
        refuses(script, OSASyntaxTypeError, "Expected " + what + " but found " + found + ".");
    };
    const std::string tell_word = "\"tell\"", statement = "\"activate\", \"select\" or \"end\"";
    wrong("", tell_word, "the end of the script");
    wrong(" \r\n\t", tell_word, "the end of the script");
    wrong("beep", tell_word, "\"beep\"");
    wrong("\"tell\"", tell_word, "\"\"tell\"\"");
    wrong("tellapplication", tell_word, "\"tellapplication\"");
    wrong("tell me", "\"application\"", "\"me\"");
    wrong("tell", "\"application\"", "the end of the script");
    wrong("tell\rapplication", "\"application\"", "the end of the line");
    wrong("tell application x", "the path of an application", "\"x\"");
    wrong("tell application \"a:b\" to activate", "the end of the line", "\"to\"");
    wrong(begin, statement, "the end of the script");
    wrong(begin + "activate\rtell", statement, "\"tell\"");
    wrong(begin + "activate now", "the end of the line", "\"now\"");
    wrong(begin + "activate activate", "the end of the line", "\"activate\"");
    wrong(begin + "activ\xC3\xA9\rend tell", statement, "\"activ\"");
    wrong(begin + "\xC3\xA9", statement, "\"\xC3\xA9\"");
    wrong(begin + "\xFF", statement, "\"\xFF\"");
    wrong(begin + "select line 3", "\"display_line\"", "\"line\"");
    wrong(begin + "select display_line \"3\"", "a whole number", "\"\"3\"\"");
    wrong(begin + "select display_line 3\rof text window 1", "\"of\"", "the end of the line");
    wrong(begin + "select display_line 3 of text window 2", "\"1\"", "\"2\"");
    wrong(begin + "select display_line 3 of text window", "\"1\"", "the end of the script");
    wrong(begin + "activate\rend", "\"tell\"", "the end of the script");
    wrong(begin + "activate\rend tell tell", "the end of the line", "\"tell\"");
    wrong(begin + "activate\rend tell\rquit", tell_word, "\"quit\"");
}

TEST_F(ScriptComponent, ATextThatEndsWithinQuotesOrHoldsAZeroByteIsRefused) {
    const std::string zero(1, '\0'), no_zero = "A script cannot hold a zero byte.";
    for (const char *const open : {"\"", "tell application \"a:b", "tell application \"a:b\\\"",
                                   "tell application \"a:b\\", "tell application \"\r activate\r end tell\r"})
        refuses(open, OSASyntaxError, "The script ends within quotes.");
    refuses(zero, OSASyntaxError, no_zero);
    refuses("tell application \"a:b" + zero + "\"", OSASyntaxError, no_zero);
    refuses("tell application \"a:b\\" + zero + "\"", OSASyntaxError, no_zero);
    refuses(tell("a:b", zero), OSASyntaxError, no_zero);
    for (const char *const between : {"", "\r", "\r\r \n"}) {
        refuses(between + zero, OSASyntaxError, no_zero);
        refuses(between + tell("a:b", between + zero), OSASyntaxError, no_zero);
        refuses(tell("a:b", "activate") + between + zero, OSASyntaxError, no_zero);
        refuses(tell("a:b", "activate") + between + "\"", OSASyntaxError, "The script ends within quotes.");
    }
}

TEST_F(ScriptComponent, ATextWithABadLineSendsNothing) {
    const std::string app = application("one");
    refuses(tell(app, "activate\rselect display_line 3 of text window 1\rbeep"), OSASyntaxTypeError,
            "Expected \"activate\", \"select\" or \"end\" but found \"beep\".");
    refuses(tell(app, "activate") + "tell", OSASyntaxTypeError,
            "Expected \"application\" but found the end of the script.");
    ProcessSerialNumber psn = kNoProcess;
    while (GetNextProcess(&psn) == noErr && !IsPlainProcess(&psn)) {
        ProcessInfoRec info = {60, nullptr, {}, 0, 0, nullptr};
        EXPECT_EQ(GetProcessInformation(&psn, &info), noErr);
        EXPECT_NE(info.processSignature, four("SCR1"));
    }
}

TEST_F(ScriptComponent, AMessageRepeatsNoMoreThanTheBeginningOfALongText) {
    const std::string forty(40, 'x'), accents = "\xC3\xA9";
    refuses(forty, OSASyntaxTypeError, "Expected \"tell\" but found \"" + forty + "\".");
    refuses(forty + "y", OSASyntaxTypeError, "Expected \"tell\" but found \"" + forty + "...\".");
    EXPECT_EQ(shortened_text("a" + accents + accents, 4), "a" + accents + "...");
    EXPECT_EQ(shortened_text("a" + accents + accents, 5), "a" + accents + accents);
    EXPECT_EQ(shortened_text("\xFF\xFF\xFF", 2), "\xFF\xFF...");
    const std::string path = "tmp:" + std::string(300000, 'p');
    refuses(tell(path, "activate"), errAENoSuchObject,
            "The application \"" + path.substr(0, 100) + "...\" cannot be found.");
}

TEST_F(ScriptComponent, AnApplicationThatIsNotThereCannotBeFound) {
    for (const std::string &path :
         {home_.mac("apps/none.app"), std::string("none:none"), std::string("one.app"),
          std::string(":one.app"), std::string(""), std::string(":")})
        refuses(tell(path, "activate"), errAENoSuchObject,
                "The application \"" + path + "\" cannot be found.");
}

TEST_F(ScriptComponent, ABundleWithoutAProgramCannotBeLaunched) {
    home_.file("apps/empty.app/Contents/PkgInfo", "APPLSCR3");
    const std::string path = home_.mac("apps/empty.app");
    refuses(tell(path, "activate"), procNotFound, "The application \"" + path + "\" cannot be launched.");
}

TEST_F(ScriptComponent, AProgramThatIsNoBundleIsLaunchedToBeActivatedAlone) {
    chmod(home_.file("apps/plain", "#!/bin/sh\n").c_str(), 0755);
    const std::string path = home_.mac("apps/plain");
    refuses(tell(path, "select display_line 3 of text window 1"), procNotFound,
            "The application \"" + path + "\" does not run.");
    EXPECT_EQ(pending_starts.size(), 0u);
    EXPECT_EQ(run(tell(path, "activate")), noErr);
    ASSERT_EQ(pending_starts.size(), 1u);
    EXPECT_EQ(pending_starts[0].path, home_.path("apps/plain"));
    EXPECT_EQ(sent.size(), 1u);
}

TEST_F(ScriptComponent, TheFirstErrorOfASendEndsTheScript) {
    const std::string app = application("one");
    answer = errAEEventNotHandled;
    EXPECT_EQ(run(tell(app, "activate\ractivate")), errOSAScriptError);
    EXPECT_EQ(sent.size(), 1u);
    EXPECT_EQ(last_number(component_), errAEEventNotHandled);
    EXPECT_EQ(last_message(component_), "The application \"" + app + "\" gave the error -1708.");
    // The next script forgets it.
    answer = noErr;
    EXPECT_EQ(run(tell(app, "activate")), noErr);
    EXPECT_EQ(last_number(component_), 0);
}

TEST_F(ScriptComponent, OnlyTheErrorOfAScriptIsTold) {
    AEDesc desc;
    EXPECT_EQ(OSAScriptError(component_, four("erob"), typeChar, &desc), errOSABadSelector);
    EXPECT_EQ(OSAScriptError(component_, kOSAErrorNumber, typeChar, &desc), errAECoercionFail);
    EXPECT_EQ(OSAScriptError(component_, kOSAErrorMessage, typeShortInteger, &desc), errAECoercionFail);
    EXPECT_EQ(desc.data, nullptr);
}

TEST_F(ScriptComponent, SourcesAndResultsOfOtherKindsAreRefused) {
    AEDesc source;
    OSAID result = 9;
    EXPECT_EQ(OSACompileExecute(component_, &source, kOSANullScript, kOSAModeNull, &result),
              errAECoercionFail);
    AECreateDesc(typeChar, "x", 1, &source);
    EXPECT_EQ(OSACompileExecute(component_, &source, 1, kOSAModeNull, &result), errOSAInvalidID);
    AEDisposeDesc(&source);
    EXPECT_EQ(OSADispose(component_, kOSANullScript), noErr);
    EXPECT_EQ(OSADispose(component_, 1), errOSAInvalidID);
}

TEST_F(ScriptComponent, TheShellsOwnEventsOutliveTheWaitInTheirOrder) {
    while_sending = [](AEIdleProc idle) {
        std::uint32_t sleep = 0;
        EventRecord event = {osEvt, suspendResumeMessage, 0, {0, 0}, 0, 0};
        EXPECT_EQ(idle(&event, &sleep), 0);
        event = {updateEvt, 5, 0, {0, 0}, 0, 0};
        EXPECT_EQ(idle(&event, &sleep), 0);
        EXPECT_EQ(sleep, 0u);
        event = {nullEvent, 0, 0, {0, 0}, 0, 0};
        EXPECT_EQ(idle(&event, &sleep), 0);
        EXPECT_EQ(sleep, 15u);
        // This one comes when the wait is over.
        PostEvent(osEvt, suspendResumeMessage | resumeFlag, 0, {0, 0});
    };
    EXPECT_EQ(run(tell(application("one"), "activate")), noErr);
    EventRecord event;
    for (const std::pair<int, std::uint32_t> &expected :
         {std::pair{int{osEvt}, std::uint32_t{suspendResumeMessage}}, std::pair{int{updateEvt}, 5u},
          std::pair{int{osEvt}, std::uint32_t{suspendResumeMessage | resumeFlag}}}) {
        ASSERT_EQ(GetNextEvent(0x8140, &event), 1);
        EXPECT_EQ(event.what, expected.first);
        EXPECT_EQ(event.message, expected.second);
    }
    EXPECT_EQ(GetNextEvent(0x8140, &event), 0);
}

TEST_F(ScriptComponent, ThePersonGivesTheWaitUp) {
    static int stopped;
    stopped = 0;
    while_sending = [](AEIdleProc idle) {
        EventRecord none = {nullEvent, 0, 0, {0, 0}, 0, 0};
        std::uint32_t sleep = 0;
        PostEvent(keyDown, '.', cmdKey, {0, 0});
        stopped += idle(&none, &sleep);
        stopped += idle(&none, &sleep);
        RequestCancel();
        stopped += 10 * idle(&none, &sleep);
        stopped += 10 * idle(&none, &sleep);
    };
    EXPECT_EQ(run(tell(application("one"), "activate")), noErr);
    EXPECT_EQ(stopped, 11);
}

TEST_F(ScriptComponent, AComponentThatIsClosedWhileItsScriptRunsFinishesTheScript) {
    static ComponentInstance running;
    running = component_;
    while_sending = [](AEIdleProc) { CloseComponent(running); };
    EXPECT_EQ(run(tell(application("one"), "activate\ractivate")), noErr);
    EXPECT_EQ(sent.size(), 2u);
    EXPECT_EQ(OSADispose(component_, kOSANullScript), badComponentInstance);
}

} // namespace quillon
