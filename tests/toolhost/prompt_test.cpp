#include "toolhost/prompt.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace {

// A program on a terminal of its own.
class Prompt : public testing::Test {
  protected:
    void SetUp() override {
        master_ = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        ASSERT_TRUE(master_ >= 0 && grantpt(master_) == 0 && unlockpt(master_) == 0);
        char name[128];
        ASSERT_EQ(ptsname_r(master_, name, sizeof name), 0);
        terminal_ = name;
        ASSERT_EQ(pipe(other_), 0);
    }
    void TearDown() override {
        kill(program_, SIGKILL);
        kill(-program_, SIGKILL);
        waitpid(program_, nullptr, 0);
        for (const int descriptor : {master_, other_[0], other_[1]})
            close(descriptor);
    }
    // Starts a program that does what BODY does with the terminal.
    void start(const std::function<void(int terminal)> &body) {
        program_ = fork();
        if (program_ == 0) {
            setsid();
            body(open(terminal_.c_str(), O_RDWR));
            _exit(0);
        }
        watch_.start(program_, terminal_);
    }
    // Waits until the program sleeps in the system call.
    void until_asleep() {
        const std::string name = "/proc/" + std::to_string(program_) + "/stat";
        char text[256] = {};
        do {
            const int file = open(name.c_str(), O_RDONLY);
            text[read(file, text, sizeof text - 1)] = '\0';
            close(file);
        } while (!std::strstr(text, ") S "));
    }
    static void read_from(int descriptor) {
        char byte;
        if (read(descriptor, &byte, 1) < 0)
            _exit(1);
    }

    toolhost::PromptWatch watch_;
    std::string terminal_;
    int master_ = -1, other_[2] = {-1, -1};
    pid_t program_ = 0;
};

} // namespace

TEST_F(Prompt, NothingWaitsBeforeTheStart) {
    EXPECT_FALSE(toolhost::PromptWatch().waits(true));
    start([](int) { pause(); });
}

TEST_F(Prompt, AReadOfTheTerminalWaits) {
    start([](int terminal) { read_from(terminal); });
    while (!watch_.waits(true))
        sched_yield();
    EXPECT_TRUE(watch_.waits(false));
}

TEST_F(Prompt, AReadOfAnythingElseDoesNot) {
    start([this](int) { read_from(other_[0]); });
    until_asleep();
    EXPECT_FALSE(watch_.waits(false));
}

TEST_F(Prompt, AWriteToTheTerminalDoesNot) {
    start([](int terminal) {
        const std::string flood(100000, 'x');
        if (write(terminal, flood.data(), flood.size()) < 0)
            _exit(1);
    });
    until_asleep();
    EXPECT_FALSE(watch_.waits(false));
}

TEST_F(Prompt, AGrandchildThatReadsWaits) {
    start([](int terminal) {
        if (fork() == 0) {
            if (fork() == 0)
                read_from(terminal);
            pause();
        }
        pause();
    });
    while (!watch_.waits(true))
        sched_yield();
    EXPECT_TRUE(watch_.waits(false));
}
