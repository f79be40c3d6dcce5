// Work in the background: quillon-background BUNDLE PROGRAM (PROGNAME NAME)... makes uncompressed copies of
// the formats that PROGRAM, the engine of the bundle at BUNDLE, finds as NAME when it searches as PROGNAME.
//
// quillon-background --snapshot BUNDLE PROGRAM FOLDER DOCUMENT WORD... makes the snapshot of a preamble: of
// DOCUMENT, on which the engine was run with the words WORD... in FOLDER. It waits for other such programs,
// and says on standard output what came of it.
//
// One such program runs for a user at a time, with the lowest priority, for a minute at most, and no longer
// than the session. Nobody waits for it, and it says nothing.
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <sched.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include "background/snapshot_maker.h"
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

// True when no other such program of this user runs, which is waited for with WAITS. The lock goes with the
// process.
bool is_alone(bool waits) {
    const std::string folder = common::temporary_folder();
    const int lock = common::make_private_folder(folder)
                         ? open((folder + "/background.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)
                         : -1;
    return lock >= 0 && flock(lock, waits ? LOCK_EX : LOCK_EX | LOCK_NB) == 0;
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

// Makes uncompressed copies: WORDS are the program and pairs of names.
void copy_formats(const common::Bundle &bundle, int count, char **words,
                  const std::function<bool()> &goes_on) {
    for (int i = 1; i + 1 < count; i += 2) {
        alarm(longest_seconds);
        const toolhost::FormatSearch search = {words[0], words[i], words[i + 1]};
        background::copy_format(
            search, toolhost::run_environment(bundle, {search.progname}, common::space_byte(), ""), goes_on);
    }
}

// Makes a snapshot: WORDS are the program, the folder, the document and the words of the engine.
void make_snapshot(const common::Bundle &bundle, int count, char **words,
                   const std::function<bool()> &goes_on) {
    alarm(longest_seconds);
    const std::vector<std::string> of_engine(words + 3, words + count);
    const toolhost::Variables environment =
        toolhost::run_environment(bundle, of_engine, common::space_byte(), "");
    toolhost::SnapshotCall call;
    std::string result = toolhost::fill_call(words[0], of_engine, words[1], words[2], &call);
    if (result.empty()) {
        // Its runs are faster with an unpacked format.
        background::copy_format(call.search, environment, goes_on);
        result = background::make_snapshot(call, environment,
                                           common::above_own_program(2) + "/Resources/snapshot.tex", goes_on);
    }
    std::puts(result.c_str());
}

} // namespace

int main(int count, char **words) {
    common::Bundle bundle;
    const bool snapshot = count > 6 && std::strcmp(words[1], "--snapshot") == 0;
    const int first = snapshot ? 2 : 1;
    if ((!snapshot && (count < 5 || count % 2 == 0)) ||
        !common::read_bundle(words[first], snapshot ? words[6] : words[3], bundle)) {
        std::fputs("usage: quillon-background BUNDLE PROGRAM (PROGNAME NAME)...\n"
                   "       quillon-background --snapshot BUNDLE PROGRAM FOLDER DOCUMENT WORD...\n",
                   stderr);
        return exit_usage;
    }
    alarm(longest_seconds);
    take_lowest_priority();
    if (chdir("/") != 0 || !is_alone(snapshot))
        return 0;
    sd_bus *bus = nullptr;
    sd_bus_open_user(&bus);
    const auto goes_on = [bus] { return session_lasts(bus); };
    if (background::tidy_copies()) {
        const auto work = snapshot ? make_snapshot : copy_formats;
        work(bundle, count - first - 1, words + first + 1, goes_on);
    }
    sd_bus_flush_close_unref(bus);
    return 0;
}
