// Argument and environment lists in the form that execve and posix_spawn take.
#ifndef QUILLON_COMMON_ARGUMENT_LIST_H
#define QUILLON_COMMON_ARGUMENT_LIST_H

#include <string>
#include <vector>

namespace common {

// Returns a null-terminated list of pointers into WORDS. WORDS must outlive the list and must not change.
std::vector<char *> argument_list(std::vector<std::string> &words);

} // namespace common

#endif
