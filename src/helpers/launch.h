// Starting a program that lives on by itself.
#ifndef QUILLON_HELPERS_LAUNCH_H
#define QUILLON_HELPERS_LAUNCH_H

#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace helpers {

struct Launch {
    std::vector<std::string> words; // the program, found along PATH, and its arguments
    std::string folder;             // empty: the current one
    // Called in the process that will be the program; false leaves the start out. The caller does not wait
    // for it, and is not told what comes of the start.
    std::function<bool()> before;
    int kept = -1; // a descriptor that stays open for BEFORE
    // Called, beside the program, once it runs; its process ends afterwards.
    std::function<void(pid_t program)> after;
};

// Starts the program in a session of its own, with empty input and no output, and none of this process's
// files. 0, or the error that kept it from starting.
int start_detached(const Launch &launch);
// The absolute path of a program along PATH (without the helpers' own folder), or of a path that can be run;
// empty when there is none.
std::string program_path(const std::string &name);

} // namespace helpers

#endif
