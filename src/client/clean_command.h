// The command `quillon clean`: removes what the runs of a document have written beside its output.
#ifndef QUILLON_CLIENT_CLEAN_COMMAND_H
#define QUILLON_CLIENT_CLEAN_COMMAND_H

#include <string>

namespace client {

// Lists what the runs of the document at MAIN, an absolute POSIX path, have written beside its output, and
// removes it when YES, or when the person at the terminal says so. The trash takes the files where the
// desktop has one. Returns the exit status: 0, or 1 when a file could not be removed.
int clean(const std::string &main, bool yes);

} // namespace client

#endif
