// Starting other programs: the shell, the set-up, a session bus.
#ifndef QUILLON_CLIENT_START_H
#define QUILLON_CLIENT_START_H

#include <string>
#include <sys/types.h>
#include <vector>

namespace client {

constexpr int status_unavailable = 69;

// The shell's Contents folder, beside the folder of this command.
std::string contents_folder();
std::string shell_program();
// Runs `setpaths --defaults` when there is no preferences file yet.
void ensure_preferences();
// Becomes PROGRAM with WORDS; under a session bus of its own when OWN_BUS. Answers only on failure, with a
// status.
int become(const std::string &program, const std::vector<std::string> &words, bool own_bus);
// Starts a headless shell that runs until it is told to quit; its process id, or -1.
pid_t start_service();
// Waits for the process, at most SECONDS, then kills it.
void wait_for_end(pid_t process, int seconds);

} // namespace client

#endif
