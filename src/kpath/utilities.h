// These utilities check what they do with memory, strings and files. When one of them fails, it prints a
// message on standard error (the console) and ends the run through DoJump, so the caller need not check.
#ifndef QUILLON_KPATH_UTILITIES_H
#define QUILLON_KPATH_UTILITIES_H

#include <cstddef>
#include <cstdio>

namespace quillon {

// Allocate like the library's procedures, and never return null. The caller frees the block with free(). A
// size of 0 counts as 1.
void *xmalloc(std::size_t size);
void *xcalloc(std::size_t count, std::size_t size);
void *xrealloc(void *pointer, std::size_t size);
// Allocates a block that only myfree may free.
void *myxmalloc(std::size_t size);
// Frees a block of myxmalloc; null does nothing. Any other pointer ends the run with DoJump(1).
void myfree(void *pointer);
// Return a copy of a text, or texts joined, in a new string that the caller frees with free().
char *xstrdup(const char *text);
char *concat(const char *a, const char *b);
char *concat3(const char *a, const char *b, const char *c);
// Returns the place in NAME behind the last "." of its last component; null when that has none.
const char *find_suffix(const char *name);
// Returns NAME without its suffix and the "." in a new string (free()); null when it has no suffix.
char *remove_suffix(const char *name);
// Return NAME with "." and SUFFIX appended in a new string (free()). The first appends nothing when NAME has
// a suffix or SUFFIX is null.
char *extend_filename(const char *name, const char *suffix);
char *always_extend_filename(const char *name, const char *suffix);
// Reads a line of any length, without its line end (a line feed or a carriage return), into a new string
// (free()). Returns null at the end of the file; a last line without a line end is lost.
char *read_line(std::FILE *file);
// Open the file at a Unix path as myfopen does, and close it; PATH names it in messages. A failure ends the
// run with errno as the code.
std::FILE *xfopen(const char *path, const char *mode);
void xfclose(std::FILE *file, const char *path);
// Ends the run through DoJump(STATUS) and does not return.
void uexit(int status);

} // namespace quillon

#endif
