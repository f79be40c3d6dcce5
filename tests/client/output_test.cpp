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
    EXPECT_EQ(client::command_line({"pdftex", "a b.tex", ""}, 31), "pdftex a\x1f"
                                                                   "b.tex \"\"");
    EXPECT_EQ(client::command_line({}, 31), "");
}

TEST(CommandLine, ATabOrALineEndInAWordPartsItNot) {
    EXPECT_EQ(client::command_line({"tex", "c\td", "e\nf g"}, 31), "tex \"c\td\" \"e\nf\x1fg\"");
    EXPECT_EQ(client::command_line({"\"a\tb\""}, 31), "\"a\tb\"");
}

TEST(ExecWords, OptionsStandBeforeTheCommand) {
    client::ExecRequest request;
    EXPECT_EQ(client::read_exec_words({"exec", "-f", "--view", "-C", "sub", "--", "-x", "--edit"}, request),
              "");
    EXPECT_TRUE(request.follow && request.view && !request.edit);
    EXPECT_EQ(request.folder, "sub");
    EXPECT_EQ(request.words, (std::vector<std::string>{"-x", "--edit"}));
}

TEST(ExecWords, WhatIsNotUnderstoodIsSaid) {
    client::ExecRequest request;
    EXPECT_EQ(client::read_exec_words({"exec", "--edit"}, request), "exec needs a command");
    EXPECT_EQ(client::read_exec_words({"exec", "-C"}, request), "exec does not know -C");
    EXPECT_EQ(client::read_exec_words({"exec", "-x", "tex"}, request), "exec does not know -x");
}
