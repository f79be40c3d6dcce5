// The command `quillon clean`: removes what the runs of a document have written beside its output.
#ifndef QUILLON_CLIENT_CLEAN_COMMAND_H
#define QUILLON_CLIENT_CLEAN_COMMAND_H

#include <string>
#include <vector>

namespace client {

// Returns the files that are removed for the document whose main file is at MAIN, an absolute POSIX path:
// what its runs wrote, is still there, and is neither an output nor a file that a person may have written.
std::vector<std::string> files_to_clean(const std::string &main);

// Lists these files, and removes them when YES, or when the person at the terminal says so. The trash takes
// them where the desktop has one. Returns the exit status: 0, or 1 when a file could not be removed.
int clean(const std::string &main, bool yes);

} // namespace client

#endif
