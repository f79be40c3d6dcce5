// `quillon exec`: the shell runs a command, and this program shows its console and exits with its status.
#ifndef QUILLON_CLIENT_EXEC_COMMAND_H
#define QUILLON_CLIENT_EXEC_COMMAND_H

#include <string>
#include <systemd/sd-bus.h>
#include <vector>

namespace client {

struct ExecRequest {
    std::vector<std::string> words; // of the command
    std::string folder;             // where it runs, an absolute POSIX path
    bool follow = false;            // show the tool's output live and pass answers to it
    bool view = false;              // open the viewer after a clean run
    bool edit = false;              // open the editor on an error
};

// Returns WORDS as one command line for the shell. A blank inside a word becomes the byte SPACE, an empty
// word two quotes.
std::string command_line(const std::vector<std::string> &words, unsigned char space);

// Runs the request in the running shell, else in a private one. The first error of the run is said on the
// standard error as "file:line: message". Returns the exit status: that of the run, 127 when nothing could be
// run, 130 after a cancel, 75 when the shell is busy, 64 for a request that it refuses, 69 when there is no
// shell or it went away.
int exec_command(sd_bus *bus, const ExecRequest &request);

} // namespace client

#endif
