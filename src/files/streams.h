// These procedures open and read files, and resolve aliases.
#ifndef QUILLON_FILES_STREAMS_H
#define QUILLON_FILES_STREAMS_H

#include <cstdio>

#include "toolbox/bounded.h"
#include "toolbox/types.h"

namespace quillon {

// Opens the file at the Unix path PATH, with a mode as of fopen; a relative path is taken as below curr_dir.
// Returns null with errno set on failure, as for a folder or a pipe. A DVI file that is opened for writing
// becomes current_dvifile.
std::FILE *myfopen(const char *path, const char *mode);
// Opens the file at an HFS path, and does not resolve aliases. Returns null with errno set on failure.
std::FILE *open_mac_path(const char *mac_path, const char *mode);
// Reads a line of at most SIZE - 2 bytes into BUFFER, with a NUL after it. A line feed or a carriage return
// ends a line and is stored as a line feed. Returns BUFFER, or null at the end of the file.
char *mfgets(char *buffer, int size, std::FILE *stream);
// Replaces each alias in an HFS path by what it leads to, in place. Returns 1, or 0 (with the path as it was)
// when a component does not exist or the result does not fit.
int MyResolve(BoundedBuffer &mac_path);
// Resolves only the last component of an HFS path, in place. Returns noErr, the error of the file system, or
// bdNamErr when the result does not fit; the path is then as it was.
OSErr MyResolveAliasFile(BoundedBuffer &mac_path);

} // namespace quillon

#endif
