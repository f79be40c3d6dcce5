// Shell commands through a pipe, with their output in the console.
#ifndef QUILLON_TOOLS_SHELL_COMMANDS_H
#define QUILLON_TOOLS_SHELL_COMMANDS_H

#include <cstddef>
#include <cstdio>

#include "toolbox/types.h"

namespace quillon {

extern std::size_t (*BSDfread)(void *, std::size_t, std::size_t, std::FILE *);
extern std::FILE *(*BSDpopenFunc)(const char *, const char *);
extern int (*BSDpclose)(std::FILE *);
extern int (*BSDfgetc)(std::FILE *);
extern char *(*BSDfgets)(char *, int, std::FILE *);
extern int (*BSDchdir)(const char *);

// Binds the system library's functions: 0, or the error that stopped it.
OSStatus getMachOCalls();
// 1 when the command's exit status is 0. FOLDER (POSIX path) may be null: the current folder is kept.
int InvokeTool(const char *command_line, const char *folder);

} // namespace quillon

#endif
