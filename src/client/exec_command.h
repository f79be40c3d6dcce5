// `quillon exec`: a command run by the shell, its console here, its status ours.
#ifndef QUILLON_CLIENT_EXEC_COMMAND_H
#define QUILLON_CLIENT_EXEC_COMMAND_H

#include <string>
#include <systemd/sd-bus.h>
#include <vector>

namespace client {

struct ExecRequest {
    std::vector<std::string> words;
    std::string folder; // absolute
    bool follow = false;
};

// The command line as the shell takes it: a blank inside a word is SPACE, an empty word two quotes.
std::string command_line(const std::vector<std::string> &words, unsigned char space);

// Runs the request in the running shell, or in a headless one of its own. The exit status: the run's; 127
// where no tool was run, 130 when cancelled, 75 when the shell was busy, 69 when it went.
int exec_command(sd_bus *bus, const ExecRequest &request);

} // namespace client

#endif
