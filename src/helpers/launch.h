// Starts programs that live on when this command has ended.
#ifndef QUILLON_HELPERS_LAUNCH_H
#define QUILLON_HELPERS_LAUNCH_H

#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace helpers {

struct Launch {
    std::vector<std::string> words; // the program, found along PATH, and its arguments
    std::string folder;             // where it runs; empty for the working folder
    // Called, if set, once the program is started, in a process of its own that ends afterwards.
    std::function<void(pid_t program)> after;
};

// Starts the program in a session of its own, with empty input, no output and none of this process's files.
// Returns 0, with its process id in PROCESS unless that is null, or the errno that kept it from starting.
int start_detached(const Launch &launch, pid_t *process = nullptr);
// Does WORK in a process of that kind, which then ends. KEPT is a descriptor that stays open in it. Returns
// 0, or the errno that kept the process from starting.
int work_detached(const std::function<void()> &work, int kept);
// Returns the absolute path of the program that is named NAME along PATH, in which the folder of these
// commands does not count. A NAME with a slash is a path and is returned as it is. Empty when there is
// nothing to run.
std::string program_path(const std::string &name);

} // namespace helpers

#endif
