// The shell runs commands through a pipe and prints their output in the console.
#ifndef QUILLON_TOOLS_SHELL_COMMANDS_H
#define QUILLON_TOOLS_SHELL_COMMANDS_H

#include <cstddef>
#include <cstdio>

#include "toolbox/types.h"

namespace quillon {

// Functions of the system's C library; null until getMachOCalls has found them.
extern std::size_t (*BSDfread)(void *, std::size_t, std::size_t, std::FILE *);
extern std::FILE *(*BSDpopenFunc)(const char *, const char *);
extern int (*BSDpclose)(std::FILE *);
extern int (*BSDfgetc)(std::FILE *);
extern char *(*BSDfgets)(char *, int, std::FILE *);
extern int (*BSDchdir)(const char *);

// Finds the functions above in the system's library. Returns noErr, or -4960 when the library cannot be
// loaded.
OSStatus getMachOCalls();
// Runs COMMAND_LINE with the shell and prints its output in the console. FOLDER, a POSIX path, becomes the
// process's current folder unless it is null. Returns 1 when the command's exit status is 0, else 0.
int InvokeTool(const char *command_line, const char *folder);

} // namespace quillon

#endif
