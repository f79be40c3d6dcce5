// The notes that tool hosts leave while a run goes on, and the processes of runs whose host has died.
//
// A note is an empty file in runs_folder() that the host keeps locked. Its name marks the run: the program
// and everything that it starts carry it as QUILLON_RUN in the environment, and as the name of the memory
// file at a descriptor, which stays when a program clears its environment. A note that nobody locks is that
// of a host that died before its run had ended.
#ifndef QUILLON_COMMON_RUN_NOTES_H
#define QUILLON_COMMON_RUN_NOTES_H

#include <string>

namespace common {

inline constexpr const char *run_variable = "QUILLON_RUN";
// The descriptor at which the program of a run has the memory file that is named memory_file_name(mark).
constexpr int run_descriptor = 9;

// A note that this process holds. An empty mark is no note.
struct RunNote {
    std::string mark;
    int file = -1;
};

// Returns a new note; one without a mark when none can be written.
RunNote leave_note();
// Removes the note once nothing of its run is left, and makes NOTE empty.
void remove_note(RunNote &note);
std::string memory_file_name(const std::string &mark);

// Kills what is left of every run whose note nobody holds any more, and removes these notes. Only processes
// of this user that carry the mark of such a run are killed, with what is below them; never this process.
// Where there is no such note, it costs the reading of one small folder.
void end_left_runs();

} // namespace common

#endif
