// The shell, as this command calls it over the bus.
#ifndef QUILLON_CLIENT_SHELL_CALLS_H
#define QUILLON_CLIENT_SHELL_CALLS_H

#include <string>
#include <systemd/sd-bus.h>
#include <vector>

namespace client {

bool shell_runs(sd_bus *bus);
// Sends every file to the running shell and brings it forward; the status of the command.
int open_files(sd_bus *bus, const std::vector<std::string> &files);
// Calls METHOD with the text (none when null) and prints the text that comes back.
int call_for_text(sd_bus *bus, const char *method, const char *text, bool empty_is_failure);
int quit_shell(sd_bus *bus);
// Says that no shell runs.
int no_shell();

} // namespace client

#endif
