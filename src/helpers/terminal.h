// Runs commands in the desktop's terminal.
#ifndef QUILLON_HELPERS_TERMINAL_H
#define QUILLON_HELPERS_TERMINAL_H

#include <string>
#include <vector>

namespace helpers {

// Returns the words of the command that runs WORDS in a terminal: in the one that the variable TERMINAL
// names, else in x-terminal-emulator. Empty when there is neither.
std::vector<std::string> in_terminal(const std::vector<std::string> &words);

} // namespace helpers

#endif
