// Starting other programs: the shell, the set-up, a session bus.
#ifndef QUILLON_CLIENT_START_H
#define QUILLON_CLIENT_START_H

#include <string>
#include <vector>

namespace client {

constexpr int status_unavailable = 69; // EX_UNAVAILABLE of sysexits.h

// Return the absolute POSIX paths of the shell's bundle folder Contents, which is found from the place of
// this command, and of the shell's program. Neither need exist.
std::string contents_folder();
std::string shell_program();
// Runs `setpaths --defaults`, or IN_WINDOW the set-up with its window, and waits for its end when there is no
// preferences file yet. False, after a message of whoever failed, when there is none afterwards either.
bool ensure_preferences(bool in_window);
// Replaces this process by PROGRAM (a POSIX path) with the arguments WORDS, under a session bus of its own
// when OWN_BUS. Returns only on failure: the exit status, after a message.
int become(const std::string &program, const std::vector<std::string> &words, bool own_bus);
} // namespace client

#endif
