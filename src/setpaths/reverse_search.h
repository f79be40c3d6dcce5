// The command for reverse search (a click in the output opens the source) in the settings files of viewers
// that keep it there.
#ifndef QUILLON_SETPATHS_REVERSE_SEARCH_H
#define QUILLON_SETPATHS_REVERSE_SEARCH_H

#include <string>
#include <vector>

#include "common/viewers_table.h"
#include "setpaths/ini_text.h"

namespace setpaths {

// What is to be written for a viewer, and what its file holds now.
struct ReverseSearch {
    std::string viewer;           // the name of its program
    common::Words programs;       // all names of its programs
    std::string file, group;      // an absolute POSIX path; the group's name
    IniValues values;             // as they are written
    std::vector<std::string> now; // the lines of the file that have these keys
    bool is_set = false;          // the file holds these values
    bool runs = false;            // the viewer runs, and may write its own settings over these when it ends
};

// Returns what there is to write for each installed viewer of the table that keeps the command in a file, as
// things are now. HOME is the binaries folder. None where the path of the command can stand in no command.
std::vector<ReverseSearch> reverse_searches(const std::string &home);
// Returns the sentences and lines that tell a person what write_reverse_search would do.
std::string described(const ReverseSearch &wanted);
// Writes the lines. Every other line of the file stays, and a copy of the old file beside it. A symbolic link
// stays one. True with a sentence about what was done in SAID; false, with the file as it was and a sentence
// about the reason, while the viewer runs and when something cannot be written.
bool write_reverse_search(const ReverseSearch &wanted, std::string *said);

} // namespace setpaths

#endif
