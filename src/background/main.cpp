// Work in the background: quillon-background BUNDLE PROGRAM (PROGNAME NAME)... makes uncompressed copies of
// the formats that PROGRAM, the engine of the bundle at BUNDLE, finds as NAME when it searches as PROGNAME.
//
// One such program runs for a user at a time, with the lowest priority, for a minute at most, and no longer
// than the session. Nobody waits for it, and it says nothing.
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include "background/unpack.h"
#include "common/bundle.h"
#include "common/places.h"
#include "common/preferences.h"
#include "toolhost/environment.h"

namespace {

constexpr unsigned longest_seconds = 60;
constexpr int exit_usage = 64;

// Linux' numbers for the priority of reading and writing, which the library does not name.
constexpr int io_process = 1, io_idle_class = 3 << 13;

void take_lowest_priority() {
    const sched_param none = {};
    sched_setscheduler(0, SCHED_IDLE, &none);
    if (nice(19) < 0)
        std::perror("nice");
    syscall(SYS_ioprio_set, io_process, 0, io_idle_class);
}

// True when no other such program of this user runs. The lock goes with the process.
bool is_alone() {
    const std::string folder = common::temporary_folder();
    const int lock = common::make_private_folder(folder)
                         ? open((folder + "/background.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)
                         : -1;
    return lock >= 0 && flock(lock, LOCK_EX | LOCK_NB) == 0;
}

// True while the session bus is there. Without one there is no session to go by.
bool session_lasts(sd_bus *bus) {
    if (!bus)
        return true;
    int result;
    while ((result = sd_bus_process(bus, nullptr)) > 0) {
    }
    return result == 0 && sd_bus_is_open(bus) > 0;
}

} // namespace

int main(int count, char **words) {
    common::Bundle bundle;
    if (count < 5 || count % 2 == 0 || !common::read_bundle(words[1], words[3], bundle)) {
        std::fputs("usage: quillon-background BUNDLE PROGRAM (PROGNAME NAME)...\n", stderr);
        return exit_usage;
    }
    alarm(longest_seconds);
    take_lowest_priority();
    if (chdir("/") != 0 || !is_alone())
        return 0;
    sd_bus *bus = nullptr;
    sd_bus_open_user(&bus);
    const auto goes_on = [bus] { return session_lasts(bus); };
    if (background::tidy_copies())
        for (int i = 3; i < count; i += 2) {
            alarm(longest_seconds);
            const toolhost::FormatSearch search = {words[2], words[i], words[i + 1]};
            background::copy_format(
                search, toolhost::run_environment(bundle, {search.progname}, common::space_byte(), ""),
                goes_on);
        }
    sd_bus_flush_close_unref(bus);
    return 0;
}
