// The guard: a process between the host and the program it runs, so that nothing of a run outlives it.
//
// It is a fork of the host and the program's parent. Every process that the program leaves behind becomes its
// child, whatever group or session that process chose. When the program ends, and when the host is gone, the
// guard kills all of them and ends.
#ifndef QUILLON_TOOLHOST_GUARD_H
#define QUILLON_TOOLHOST_GUARD_H

#include <string>
#include <sys/types.h>
#include <vector>

#include "toolhost/kept_output.h"

namespace toolhost {

struct Launch {
    std::string program; // absolute
    std::vector<std::string> words;
    std::vector<std::string> environment;
    std::string folder;
    int terminal = -1; // becomes the program's standard input, and its output and error
    int output = -1;   // becomes its output and error in the terminal's place; -1: the terminal does
    KeptOutput kept;   // given back when the host goes before the run ends
    int record = -1;   // becomes its descriptor edit_descriptor
};

constexpr int edit_descriptor = 9;

// What the guard reports, one packet each.
enum class GuardNews : int {
    started,     // value: the program's process id, which is its group and session too
    not_started, // value: errno
    ended,       // value: the wait status; nothing of the run is left
};
struct GuardPacket {
    GuardNews news;
    int value;
};

// Starts the guard: its process id and, in CHANNEL, the host's end of the packet channel. The host sends one
// int, a signal for the program's group; SIGKILL kills every process of the run. -1 on failure.
pid_t start_guard(const Launch &launch, int *channel);

// The argument vector of this program, which the guard writes its own title over: who looks for the host by
// its command line finds the host alone.
void keep_arguments(int count, char **words);

// Kills and reaps every descendant of this process, which must be a subreaper, until none is left. The first
// child's status is kept in STATUS when it is WATCHED.
void kill_descendants(pid_t watched, int *status, bool *reaped);

} // namespace toolhost

#endif
