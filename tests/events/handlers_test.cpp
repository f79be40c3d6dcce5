#include "events/handlers.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "core/event_loop.h"
#include "menus/menus.h"
#include "settings/settings.h"
#include "state/job_state.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"
#include "toolbox/received_events.h"

namespace quillon {
namespace {

OSErr result = 0;
std::string reply_text;
int answers = 0;

void see(OSType keyword, OSType type, const void *data, std::size_t size, void *) {
    if (type == typeChar && (keyword == keyErrorString || keyword == keyDirectObject))
        reply_text.assign(static_cast<const char *>(data), size);
}

void answered(OSErr error, const AppleEvent *reply) {
    result = error;
    answers++;
    WalkParameters(reply, see, nullptr);
}

class Handlers : public ::testing::Test {
  protected:
    void SetUp() override {
        home_.preferences("SPACECHAR=31\nDEBUG=0\n");
        check_config();
        doDebug = 0;
        SetUpMenus();
        DoAEInstallation();
    }
    void TearDown() override { at_exit = 0; }

    // Handles an event with a text and, when EXTRA is set, a parameter that no handler knows.
    void send(const char (&event_class)[5], const char (&id)[5], const char *text, int extra = 0) {
        AppleEvent event;
        MakeReceivedEvent(four(event_class), four(id), &event);
        if (text)
            AEPutParamPtr(&event, keyDirectObject, typeChar, text, std::strlen(text));
        const std::int32_t number = 1;
        if (extra)
            AEPutParamPtr(&event, four("what"), typeLongInteger, &number, sizeof number);
        answers = 0;
        result = 1;
        reply_text.clear();
        ASSERT_EQ(QueueReceivedEvent(&event, answered), 1);
        for (int i = 0; i < 10 && answers == 0; i++)
            main_event(mask_every_event);
        ASSERT_EQ(answers, 1);
    }

    test::TemporaryHome home_;
    test::RecordingFront front_;
};

TEST_F(Handlers, AfterAFailedStartEveryRequestIsBusyInItsOwnWords) {
    at_exit = 1;
    for (int i = 0; i < 3; i++) {
        if (i == 0)
            send("aevt", "odoc", "x");
        else if (i == 1)
            send("QUIL", "find", "x");
        else
            send("QUIL", "loca", "x");
        EXPECT_EQ(result, -1708);
        EXPECT_EQ(reply_text, "TeX is busy with another request.");
    }
    send("QUIL", "exec", "x");
    EXPECT_EQ(result, -1708);
    EXPECT_EQ(reply_text, "TeX is busy with a previous request.");
    EXPECT_EQ(front_->printed, "");
}

TEST_F(Handlers, AFindIsAcknowledged) {
    send("QUIL", "find", "nosuchfile.tex");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(reply_text, "TeX is processing your request.");
}

TEST_F(Handlers, AFindTextKeepsItsFirst255Characters) {
    const std::string text(300, 'x');
    send("QUIL", "loca", text.c_str());
    EXPECT_TRUE(
        front_->printed.find("A text of 300 characters was received; only its first 255 are used.\n") !=
        std::string::npos);
}

TEST_F(Handlers, WhatIsNotFoundIsLocatedAsAnEmptyText) {
    reply_text = "old";
    send("QUIL", "loca", "nosuchfile.tex");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(reply_text, "");
    EXPECT_TRUE(findString.empty());
}

TEST_F(Handlers, AnUnknownParameterIsRefusedAndSaidByExecFindAndLocate) {
    const std::string said = "I missed something.\n";
    for (int i = 0; i < 3; i++) {
        front_->printed.clear();
        if (i == 0)
            send("QUIL", "exec", "x", 1);
        else if (i == 1)
            send("QUIL", "find", "x", 1);
        else
            send("QUIL", "loca", "x", 1);
        EXPECT_EQ(result, -1708);
        EXPECT_EQ(front_->printed, said);
    }
    front_->printed.clear();
    send("QUIL", "frmt", nullptr, 1);
    EXPECT_EQ(result, -1708);
    send("aevt", "oapp", nullptr, 1);
    EXPECT_EQ(result, -1708);
    EXPECT_EQ(front_->printed, "");
}

TEST_F(Handlers, PrintingIsNeverHandled) {
    send("aevt", "pdoc", nullptr);
    EXPECT_EQ(result, -1708);
}

TEST_F(Handlers, TheFolderMarkCutsTheCommandAlsoWhereTheFolderIsMissing) {
    BoundedString<1024> command;
    curr_dir.copy("/kept/here");
    command.copy("tex x -@ /nowhere/at/all");
    EXPECT_EQ(SetCurrDirFromParameter(command), 0);
    EXPECT_EQ(command.view(), "tex x");
    command.copy("tex x -@ ");
    EXPECT_EQ(SetCurrDirFromParameter(command), 0);
    EXPECT_EQ(command.view(), "tex x");
    command.copy("tex -@x y");
    EXPECT_EQ(SetCurrDirFromParameter(command), 0);
    EXPECT_EQ(command.view(), "tex -@x y");
    EXPECT_EQ(curr_dir.view(), "/kept/here");
    command.format("tex -@ %s", home_.file("work/file").c_str());
    EXPECT_EQ(SetCurrDirFromParameter(command), 0);
    const std::string folder = home_.path("work");
    command.format("tex -@ %s", folder.c_str());
    EXPECT_EQ(SetCurrDirFromParameter(command), 1);
    EXPECT_EQ(command.view(), "tex");
    EXPECT_EQ(curr_dir.view(), folder);
}

} // namespace
} // namespace quillon
