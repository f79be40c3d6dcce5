// Argument and environment lists as the system's calls take them.
#ifndef QUILLON_COMMON_ARGUMENT_LIST_H
#define QUILLON_COMMON_ARGUMENT_LIST_H

#include <string>
#include <vector>

namespace common {

// A null-terminated list of pointers into WORDS, which must outlive it and stay as they are.
std::vector<char *> argument_list(std::vector<std::string> &words);

} // namespace common

#endif
