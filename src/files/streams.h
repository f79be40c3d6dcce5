// Opening and reading files by Unix path, and alias resolution.
#ifndef QUILLON_FILES_STREAMS_H
#define QUILLON_FILES_STREAMS_H

#include <cstdio>

#include "toolbox/bounded.h"
#include "toolbox/types.h"

namespace quillon {

// Opens the file at a Unix path; null on failure, with errno set. A folder or a pipe cannot be opened.
std::FILE *myfopen(const char *path, const char *mode);
// The same for an HFS path, without alias resolution.
std::FILE *open_mac_path(const char *mac_path, const char *mode);
// One line of at most SIZE - 2 characters, either line end stored as a line feed; null at the end of the
// file.
char *mfgets(char *buffer, int size, std::FILE *stream);
// Resolve every component, or the last one only, of an HFS path in place.
int MyResolve(BoundedBuffer &mac_path);
OSErr MyResolveAliasFile(BoundedBuffer &mac_path);

} // namespace quillon

#endif
