// Calls of this command to the running shell over the session bus. Those that return an int return the exit
// status of the command, after a message on the standard error when it is not 0: 69 when the shell does not
// answer, 1 for other failures.
#ifndef QUILLON_CLIENT_SHELL_CALLS_H
#define QUILLON_CLIENT_SHELL_CALLS_H

#include <string>
#include <systemd/sd-bus.h>
#include <vector>

namespace client {

// True when a shell has its name on the bus.
bool shell_runs(sd_bus *bus);
// Asks the shell to open every file and to come forward. FILES are POSIX paths, relative ones in the working
// folder. Waits for no answer; the status is 1 when a file is not there or cannot be sent.
int open_files(sd_bus *bus, const std::vector<std::string> &files);
// Calls METHOD of the shell with TEXT, or with nothing when TEXT is null. Prints the text that comes back,
// with a line end. An empty text is status 1 when EMPTY_IS_FAILURE.
int call_for_text(sd_bus *bus, const char *method, const char *text, bool empty_is_failure);
// Tells the shell to quit.
int quit_shell(sd_bus *bus);
// Says that no shell runs, and returns 69.
int no_shell();

} // namespace client

#endif
