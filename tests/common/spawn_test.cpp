#include "common/spawn.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "common/process_tree.h"

namespace {

namespace fs = std::filesystem;

// Stops the first child of this process that is still this program. Returns whether it did so in time: before
// the child became another program.
bool stop_next_child(const std::atomic<bool> &enough) {
    std::error_code ignored;
    const fs::path own = fs::read_symlink("/proc/self/exe");
    while (!enough) {
        for (const pid_t child : common::children_of(getpid())) {
            const fs::path program = "/proc/" + std::to_string(child) + "/exe";
            if (fs::read_symlink(program, ignored) != own || kill(child, SIGSTOP) != 0)
                continue;
            while (!enough && common::status_of_process(child).state != 'T')
                std::this_thread::yield();
            const bool in_time = !enough && fs::read_symlink(program, ignored) == own;
            // One that was a program already is nobody's concern here.
            if (!in_time)
                kill(child, SIGCONT);
            return in_time;
        }
    }
    return false;
}

TEST(Spawn, AChildThatIsStoppedBeforeItIsItsProgramDoesNotHoldItsParent) {
    bool stopped = false;
    for (int trial = 0; trial < 1000 && !stopped; trial++) {
        std::atomic<bool> enough = false;
        std::thread stopper([&] { stopped = stop_next_child(enough); });
        pid_t child = -1;
        EXPECT_EQ(common::spawn({"/bin/true", {"true"}, {}}, &child), 0);
        enough = true;
        stopper.join();
        int status = -1;
        if (!stopped)
            kill(child, SIGCONT);
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    EXPECT_TRUE(stopped) << "no child was stopped in time";
}

} // namespace
