#include "client/live_output.h"

#include <gtest/gtest.h>

#include "client/exec_command.h"

using client::LiveOutput;

TEST(LiveOutput, WhatWasTypedIsLeftOutOnce) {
    LiveOutput output;
    output.expect_echo("yes\n");
    EXPECT_EQ(output.tool_text("ye"), "");
    EXPECT_EQ(output.tool_text("s\nmore"), "more");
    EXPECT_EQ(output.tool_text("yes\n"), "yes\n");
}

TEST(LiveOutput, AnEchoThatDoesNotComeIsForgotten) {
    LiveOutput output;
    output.expect_echo("yes\n");
    EXPECT_EQ(output.tool_text("yellow"), "llow");
    EXPECT_EQ(output.tool_text("s\n"), "s\n");
}

TEST(LiveOutput, ATranscriptOfWhatWasShownIsLeftOut) {
    LiveOutput output;
    output.transcript(true);
    EXPECT_EQ(output.console_text("a\rb"), "a\nb");
    output.transcript(false);
    output.tool_text("a");
    EXPECT_EQ(output.console_text("c\r"), "c\n");
    output.transcript(true);
    EXPECT_EQ(output.console_text("a\r"), "");
}

TEST(CommandLine, WordsAreKeptApart) {
    EXPECT_EQ(client::command_line({"pdftex", "a b.tex", "", "c\td"}, 31), "pdftex a\x1f"
                                                                           "b.tex \"\" c\td");
    EXPECT_EQ(client::command_line({}, 31), "");
}
