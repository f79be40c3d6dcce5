// The activation tokens for what the shell starts: when the front is asked for one, and for whom.
#include "linux/events/tokens.h"

#include <gtest/gtest.h>

#include <string>

#include "front/front.h"
#include "headless/headless.h"
#include "toolbox/processes.h"

namespace quillon {

namespace {

std::string asked_for;
int asked = 0;

int give(const char *app_id, BoundedBuffer &token) {
    asked++;
    asked_for = app_id ? app_id : "(null)";
    return token.format("token %d", asked);
}

class Tokens : public ::testing::Test {
  protected:
    void SetUp() override {
        asked = 0;
        own_ = headless_front;
        own_.activation_token = give;
        front = &own_;
    }
    void TearDown() override {
        open_hints = {};
        front = before_;
    }
    Front own_ = {};
    const Front *before_ = front;
};

TEST_F(Tokens, EachStartHasItsOwn) {
    EXPECT_EQ(fresh_token(""), "token 1");
    EXPECT_EQ(fresh_token(""), "token 2");
    EXPECT_EQ(asked_for, "(null)");
}

TEST_F(Tokens, AnEntryIsNamedAsTheDesktopKnowsIt) {
    fresh_token("/usr/share/applications/org.example.My-Viewer.desktop");
    EXPECT_EQ(asked_for, "org.example.My-Viewer");
    fresh_token("/usr/bin/viewer");
    EXPECT_EQ(asked_for, "(null)");
}

TEST_F(Tokens, WhatARunOpensGetsNone) {
    open_hints.after_run = 1;
    EXPECT_EQ(fresh_token(""), "");
    EXPECT_EQ(asked, 0);
}

TEST_F(Tokens, AFrontWithoutADisplayGivesNone) {
    front = &headless_front;
    EXPECT_EQ(fresh_token(""), "");
}

} // namespace

} // namespace quillon
