// Calls of this command to the running shell over the session bus. Those that return an int return the exit
// status of the command, after a message on the standard error when it is not 0: 69 when the shell does not
// answer, 1 for other failures.
#ifndef QUILLON_CLIENT_SHELL_CALLS_H
#define QUILLON_CLIENT_SHELL_CALLS_H

#include <string>
#include <systemd/sd-bus.h>
#include <vector>

namespace client {

struct Shell;

// True when a shell has its name on the bus.
bool shell_runs(sd_bus *bus);
// True unless the shell that runs says that it has no window.
bool shell_has_window(sd_bus *bus);
// Asks the shell to open every file and to come forward. FILES are POSIX paths, relative ones in the working
// folder. Waits for no answer; the status is 1 when a file is not there or cannot be sent.
int open_files(sd_bus *bus, const std::vector<std::string> &files);
// These ask SHELL and return an exit status: 0, or 1 or 69 after a message.
// Prints the path of the TeX input file NAME; the status is 1 when there is none.
int locate(const Shell &shell, const char *name);
// Does the same, and has the shell open the file in the editor.
int find(const Shell &shell, const char *name);
// Prints the formats.
int list_formats(const Shell &shell);
// Prints the problems of its last run, a line each: FILE:LINE: KIND: TEXT.
int list_problems(const Shell &shell);
// Tells the shell that runs to quit, and waits until it has left the bus, at most 30 seconds.
int quit_shell(sd_bus *bus);
// Says that no shell runs, and returns 69.
int no_shell();

} // namespace client

#endif
