// `quillon exec`: the shell runs a command, and this program shows its console and exits with its status.
#ifndef QUILLON_CLIENT_EXEC_COMMAND_H
#define QUILLON_CLIENT_EXEC_COMMAND_H

#include <systemd/sd-bus.h>

#include "client/exec_words.h"

namespace client {

// Runs the request in the running shell, else in a private one. The first error of the run is said on the
// standard error as "file:line: message". Returns the exit status: that of the run, 127 when nothing could be
// run, 130 after a cancel, 75 when the shell is busy, 64 for a request that it refuses, 69 when there is no
// shell or it went away.
int exec_command(sd_bus *bus, const ExecRequest &request);

} // namespace client

#endif
