// Work that nobody waits for.
#ifndef QUILLON_COMMON_BACKGROUND_H
#define QUILLON_COMMON_BACKGROUND_H

#include <string>
#include <vector>

namespace common {

// Starts the program quillon-background of the folder PROGRAMS with the arguments WORDS, in a session of its
// own and with none of this process's files. A failure is not said. A shell with a bus of its own, which ends
// with its only request, and its tools start nothing.
void start_in_background(const std::string &programs, std::vector<std::string> words);

} // namespace common

#endif
