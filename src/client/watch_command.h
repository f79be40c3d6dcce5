// The command `quillon watch`: typesets a document, and again whenever a file that it is made from is saved.
#ifndef QUILLON_CLIENT_WATCH_COMMAND_H
#define QUILLON_CLIENT_WATCH_COMMAND_H

#include <string>
#include <systemd/sd-bus.h>

namespace client {

// Typesets the document at FILE, an absolute POSIX path, in the shell that runs on BUS or in a private one,
// and prints the problems and the line that sums the run up. Goes on until the person interrupts it. VIEW:
// the viewer shows the output of clean runs. Returns the exit status: 130 when it was interrupted (128 and
// the number of the signal), 1 when the files cannot be watched, 69 when no shell starts.
int watch(sd_bus *bus, const std::string &file, bool view);

} // namespace client

#endif
