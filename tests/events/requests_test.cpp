// An accepted request searches for a file, opens a document or lists the formats.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "core/event_loop.h"
#include "events/handlers.h"
#include "menus/menus.h"
#include "menus/recent_files.h"
#include "state/job_state.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"
#include "toolbox/received_events.h"

namespace quillon {
namespace {

std::string direct_text;
int answers = 0;

class Requests : public ::testing::Test {
  protected:
    void SetUp() override {
        home_.preferences("SPACECHAR=31\nDEBUG=0\n");
        space_char = 31;
        usePdfTeX = useETeX = 0;
        format_name.clear();
        pdfexe.format("%s/none.app", home_.root().c_str());
        SetUpMenus();
        DoAEInstallation();
    }
    void TearDown() override {
        usePdfTeX = 0;
        odocfile.clear();
    }

    void send(const char (&id)[5], const std::string &text) {
        AppleEvent event;
        MakeReceivedEvent(four("QUIL"), four(id), &event);
        if (!text.empty())
            AEPutParamPtr(&event, keyDirectObject, typeChar, text.data(), text.size());
        answers = 0;
        direct_text.clear();
        QueueReceivedEvent(&event, [](OSErr, const AppleEvent *reply) {
            answers++;
            WalkParameters(
                reply,
                [](OSType keyword, OSType, const void *data, std::size_t size, void *) {
                    if (keyword == keyDirectObject)
                        direct_text.assign(static_cast<const char *>(data), size);
                },
                nullptr);
        });
        for (int i = 0; i < 10 && answers == 0; i++)
            main_event(mask_every_event);
        ASSERT_EQ(answers, 1);
    }
    std::string opened(const std::string &name) {
        front_->printed.clear();
        odocfile.copy(home_.path("work/" + name));
        doOpenDoc();
        return front_->printed;
    }

    test::TemporaryHome home_;
    test::RecordingFront front_;
};

TEST_F(Requests, AFindIsCarriedOutAfterItsAnswer) {
    send("find", "nosuchfile");
    EXPECT_EQ(front_->printed, "\nLooking for file <nosuchfile>.\nInput file not found.\n");
}

TEST_F(Requests, ATextThatJustFitsIsTakenWithoutAWord) {
    send("loca", std::string(255, 'x'));
    EXPECT_EQ(front_->printed, "");
    send("loca", std::string(256, 'x'));
    EXPECT_EQ(front_->printed, "A text of 256 characters was received; only its first 255 are used.\n");
}

TEST_F(Requests, FormatsAreTheItemsFromTheThirdWithBlanksBetween) {
    for (const char *const format : {"one", "two", "three"})
        AppendMenuItemText(formatMenu, format);
    send("frmt", "");
    EXPECT_EQ(direct_text, "three");
    AppendMenuItemText(formatMenu, "four");
    send("frmt", "");
    EXPECT_EQ(direct_text, "three four");
}

TEST_F(Requests, ADocumentOfACompanionGoesToThatCompanion) {
    const std::map<std::string, std::string> companions = {{".dvi", "dvips"},
                                                           {".aux", "bibtex"},
                                                           {".idx", "makeindex"},
                                                           {".glo", "makeindex"},
                                                           {".mp", "mpost"}};
    for (const auto &[extension, tool] : companions)
        EXPECT_EQ(opened("x" + extension),
                  "I can't find " + tool + ". It should be in the binaries folder.\n");
    EXPECT_EQ(opened("x.ps"), "");
    EXPECT_EQ(front_->prompt, "Find a ps to pdf converter");
    EXPECT_EQ(mypsfile.view(), home_.path("work/x.ps"));
}

TEST_F(Requests, ADocumentIsTypesetByTheJobThatIsOn) {
    EXPECT_TRUE(opened("x.gls").starts_with("\nProcessing -- pdftex -output-format=dvi x.gls \n"));
    usePdfTeX = 1;
    EXPECT_TRUE(opened("x.tex").starts_with("\nProcessing -- pdftex x.tex \n"));
}

TEST_F(Requests, ANameOf30CharactersIsTooLong) {
    std::string accents;
    for (int i = 0; i < 25; i++)
        accents += "\xC3\xA9";
    EXPECT_TRUE(opened(accents + ".tex").starts_with("\nProcessing -- "));
    const std::string hint = "It can be typeset with: quillon exec pdftex ";
    EXPECT_EQ(opened("n" + accents + ".tex"), "Filename \"n" + accents + ".tex\" is too long for Quillon.\n" +
                                                  hint + "'n" + accents + ".tex'\n");
    const std::string longest(25, 'n'), longer(26, 'n');
    EXPECT_TRUE(opened(longest + ".tex").starts_with("\nProcessing -- "));
    EXPECT_EQ(opened(longer + ".tex"),
              "Filename \"" + longer + ".tex\" is too long for Quillon.\n" + hint + longer + ".tex\n");
    EXPECT_TRUE(odocfile.empty());
}

TEST_F(Requests, ALongNameIsQuotedAndACompanionsIsNotTypeset) {
    const std::string longest(25, 'n');
    EXPECT_EQ(opened("it's\x1F" + longest), "Filename \"it's\x1F" + longest +
                                                "\" is too long for Quillon.\n"
                                                "It can be typeset with: quillon exec pdftex 'it'\\''s " +
                                                longest + "'\n");
    EXPECT_EQ(opened(longest + "n.dvi"), "Filename \"" + longest + "n.dvi\" is too long for Quillon.\n");
}

TEST_F(Requests, WhatAnEarlierEventAskedForIsForgottenAtTheNext) {
    doFind = doAppleTeX = 1;
    findString.copy("nosuchfile");
    odocfile.copy(home_.path("work/x.tex"));
    send("frmt", "");
    EXPECT_EQ(front_->printed, "");
    EXPECT_EQ(doFind + doAppleTeX, 0);
}

TEST_F(Requests, AFailedRequestIsNotCarriedOut) {
    AppleEvent event;
    const std::int32_t number = 1;
    MakeReceivedEvent(four("QUIL"), four("find"), &event);
    AEPutParamPtr(&event, keyDirectObject, typeChar, "x", 1);
    AEPutParamPtr(&event, four("what"), typeLongInteger, &number, sizeof number);
    answers = 0;
    QueueReceivedEvent(&event, [](OSErr, const AppleEvent *) { answers++; });
    while (answers == 0)
        main_event(mask_every_event);
    EXPECT_EQ(front_->printed, "I missed something.\n");
}

TEST_F(Requests, AfterAnEventThatAsksToQuitTheRecentFilesAreSavedAndTheLoopEnds) {
    EventRecord event = {};
    event.what = kHighLevelEvent;
    event.message = four("aevt");
    event.where = {static_cast<std::int16_t>(four("oapp") >> 16),
                   static_cast<std::int16_t>(four("oapp") & 0xFFFF)};
    doQuit = aeQuit = 0;
    SaveRecentFile(home_.file("work/x.tex").c_str());
    doAppleEvent(&event);
    EXPECT_EQ(doQuit, 0);
    const std::string stored = "RECENTFILE1=" + home_.path("work/x.tex") + "\n";
    EXPECT_EQ(home_.read("config/Quillon Preferences").find(stored), std::string::npos);
    aeQuit = 1;
    doAppleEvent(&event);
    EXPECT_EQ(doQuit, 1);
    EXPECT_NE(home_.read("config/Quillon Preferences").find(stored), std::string::npos);
    doQuit = aeQuit = 0;
}

} // namespace
} // namespace quillon
