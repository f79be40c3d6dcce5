// The guard: a process between the host and the program that it runs. It sees to it that no process of a run
// outlives the run.
//
// The guard is a fork of the host and the parent of the program. Every process that the program leaves behind
// becomes a child of the guard, whatever group or session it chose. When the program ends, or the host does,
// the guard kills all of them and ends.
#ifndef QUILLON_TOOLHOST_GUARD_H
#define QUILLON_TOOLHOST_GUARD_H

#include <string>
#include <sys/types.h>
#include <vector>

#include "common/run_notes.h"
#include "toolhost/kept_output.h"
#include "toolhost/recorder.h"

namespace toolhost {

// How a program is started. Its paths are absolute POSIX paths.
struct Launch {
    std::string program;
    std::vector<std::string> words;       // the first is the program's name for itself
    std::vector<std::string> environment; // NAME=value
    std::string folder;                   // where it runs
    int terminal = -1;                    // becomes the program's standard input, and its output and error
    int output = -1; // becomes its output and error in the terminal's place; -1: the terminal does
    KeptOutput kept; // given back when the host goes before the run ends
    OwnList list;    // taken away then
    int record = -1; // becomes its descriptor edit_descriptor
};

// The record is also the second mark of a run's processes (run_notes.h).
constexpr int edit_descriptor = common::run_descriptor;

// What the guard reports. Each report is one packet on the channel.
enum class GuardNews : int {
    started,     // value: the program's process id, which is its group and session too
    not_started, // value: errno
    ended,       // value: the wait status; nothing of the run is left
};
struct GuardPacket {
    GuardNews news;
    int value;
};

// What the host sends once Launch::kept is given back or dropped, and Launch::list taken away.
constexpr int output_is_settled = 0;

// Starts the guard and the program. Returns the guard's process id and puts the host's end of the packet
// channel into CHANNEL, which the caller closes; -1 on failure. On the channel the host sends an int, the
// number of a signal for the program's process group; SIGKILL kills every process of the run. After the end
// the guard waits for output_is_settled; when the host dies before, the guard sees to both itself.
pid_t start_guard(const Launch &launch, int *channel);

// Keeps the argument list of main. The guard writes a title of its own over it, so that a search for the host
// by its command line does not find the guard.
void keep_arguments(int count, char **words);

// Kills and reaps every descendant of this process, which must be a subreaper, until none is left. When the
// process WATCHED is among those reaped, its wait status is put into STATUS and REAPED is set. Both pointers
// may be null when WATCHED is 0.
void kill_descendants(pid_t watched, int *status, bool *reaped);

} // namespace toolhost

#endif
