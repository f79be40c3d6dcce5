#include <cstdio>
#include <fcntl.h>
#include <sys/resource.h>

#include "common/document_record.h"
#include "common/document_watch.h"
#include "support/temporary_home.h"

using common::DocumentWatch;
using quillon::test::in_child;
using quillon::test::TemporaryHome;

namespace {

class Watching : public ::testing::Test {
  protected:
    void SetUp() override {
        main_ = home_.file("work/x.tex", "one");
        part_ = home_.file("work/part.tex", "one");
        aux_ = home_.file("work/x.aux", "one");
        common::DocumentRecord record;
        record.read = {main_, part_, aux_};
        record.written = {aux_};
        ASSERT_TRUE(common::keep_document_record(main_, record));
        ASSERT_TRUE(watch_.begin(main_, &problem_));
    }
    // Waits until what was saved is due.
    bool is_due() {
        watch_.take_changes();
        while (watch_.due_in() > 0) {
        }
        return watch_.due_in() == 0 && watch_.take_due();
    }

    TemporaryHome home_;
    std::string main_, part_, aux_, problem_;
    DocumentWatch watch_;
};

} // namespace

TEST_F(Watching, LeavesOutWhatRunsWrite) {
    EXPECT_EQ(watch_.size(), 2u);
    EXPECT_FALSE(is_due());
    home_.file("work/x.aux", "two");
    EXPECT_FALSE(is_due());
    home_.file("work/part.tex", "two");
    EXPECT_TRUE(is_due());
    EXPECT_FALSE(is_due());
}

TEST_F(Watching, NothingIsDueWhileARunGoesOn) {
    watch_.run_begins();
    home_.file("work/part.tex", "two");
    watch_.take_changes();
    EXPECT_EQ(watch_.due_in(), -1);
    EXPECT_TRUE(watch_.changed_in_run());
    EXPECT_TRUE(watch_.run_ended(main_, &problem_));
    EXPECT_TRUE(is_due());
    EXPECT_FALSE(is_due());
}

TEST_F(Watching, WhatWasSavedBeforeARunIsReadByIt) {
    home_.file("work/part.tex", "two");
    watch_.take_changes();
    watch_.run_begins();
    EXPECT_FALSE(watch_.changed_in_run());
    EXPECT_TRUE(watch_.run_ended(main_, &problem_));
    EXPECT_FALSE(is_due());
}

TEST_F(Watching, AFileThatTheRunHasJustReadFirstMayHaveBeenSavedSince) {
    watch_.run_begins();
    // The times of files go by the host's coarse clock.
    timespec began = {}, now = {};
    clock_gettime(CLOCK_REALTIME, &began);
    while (now.tv_sec < began.tv_sec || (now.tv_sec == began.tv_sec && now.tv_nsec <= began.tv_nsec))
        clock_gettime(CLOCK_REALTIME_COARSE, &now);
    const std::string other = home_.file("work/other.tex", "one");
    common::DocumentRecord record;
    record.read = {main_, other};
    ASSERT_TRUE(common::keep_document_record(main_, record));
    EXPECT_TRUE(watch_.run_ended(main_, &problem_));
    EXPECT_TRUE(is_due());
    EXPECT_EQ(watch_.size(), 2u);
}

TEST_F(Watching, FindsASaveThatTheHostHadNoRoomToTellOf) {
    // More changes than the host keeps (16,384 by its default), of files that nobody watches.
    for (int i = 0; i < 20000; i++) {
        std::fclose(std::fopen(home_.path(i % 2 ? "work/a" : "work/b").c_str(), "w"));
        if (i == 19000)
            home_.file("work/part.tex", "two");
    }
    EXPECT_TRUE(is_due());
}

TEST_F(Watching, SaysWhenTheHostHasNoRoom) {
    EXPECT_EQ(in_child([this] {
                  DocumentWatch other;
                  const rlimit none = {0, 0};
                  setrlimit(RLIMIT_NOFILE, &none);
                  std::string problem;
                  const bool began = other.begin(main_, &problem);
                  return !began && problem == "this user watches too many files already" &&
                                 other.descriptor() < 0 && other.size() == 0
                             ? 0
                             : 1;
              }),
              0);
}

TEST_F(Watching, EndsAndBeginsAnew) {
    watch_.end();
    EXPECT_EQ(watch_.descriptor(), -1);
    EXPECT_EQ(watch_.size(), 0u);
    home_.file("work/part.tex", "two");
    watch_.take_changes();
    EXPECT_EQ(watch_.due_in(), -1);
    ASSERT_TRUE(watch_.begin(main_, &problem_));
    EXPECT_FALSE(is_due());
}
