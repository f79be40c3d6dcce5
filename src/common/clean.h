// What the runs of a document have written beside its output, and how it is removed.
#ifndef QUILLON_COMMON_CLEAN_H
#define QUILLON_COMMON_CLEAN_H

#include <string>
#include <vector>

namespace common {

struct FilesToClean {
    bool known = false;             // a run of the document is on record
    std::vector<std::string> files; // absolute POSIX paths, each once
};

// Returns the files that are removed for the document whose main file is at MAIN, an absolute POSIX path:
// what its runs wrote, is still there, and is neither an output nor a file that a person may have written.
FilesToClean files_to_clean(const std::string &main);
// True when discard moves the file at PATH to the trash: there is a display, and the trash takes it.
bool goes_to_trash(const std::string &path);
// Moves the file at PATH, an absolute POSIX path, to the trash, or deletes it where goes_to_trash is false.
// False with errno set, and the file where it was, when that is not possible.
bool discard(const std::string &path);

} // namespace common

#endif
