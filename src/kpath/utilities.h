// Checking utilities: allocation, strings, suffixes and files. A failure prints a message on standard error
// (the console) and ends the run through DoJump.
#ifndef QUILLON_KPATH_UTILITIES_H
#define QUILLON_KPATH_UTILITIES_H

#include <cstddef>
#include <cstdio>

namespace quillon {

void *xmalloc(std::size_t size);
void *xcalloc(std::size_t count, std::size_t size);
void *xrealloc(void *pointer, std::size_t size);
void *myxmalloc(std::size_t size);
void myfree(void *pointer);
char *xstrdup(const char *text);
char *concat(const char *a, const char *b);
char *concat3(const char *a, const char *b, const char *c);
const char *find_suffix(const char *name);
char *remove_suffix(const char *name);
char *extend_filename(const char *name, const char *suffix);
char *always_extend_filename(const char *name, const char *suffix);
char *read_line(std::FILE *file);
std::FILE *xfopen(const char *path, const char *mode);
void xfclose(std::FILE *file, const char *path);
void uexit(int status);

} // namespace quillon

#endif
