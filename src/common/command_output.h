// What a small program prints.
#ifndef QUILLON_COMMON_COMMAND_OUTPUT_H
#define QUILLON_COMMON_COMMAND_OUTPUT_H

#include <string>
#include <vector>

namespace common {

// Runs PROGRAM, an absolute path, with the arguments WORDS and returns the first line that it prints. Empty
// when it cannot be run or a signal ends it; its exit status does not count. ENVIRONMENT holds "NAME=value"
// for each variable; when it is empty the program gets this process's own.
std::string output_of(const std::string &program, std::vector<std::string> words,
                      std::vector<std::string> environment = {});

} // namespace common

#endif
