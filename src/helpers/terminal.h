// The desktop's terminal.
#ifndef QUILLON_HELPERS_TERMINAL_H
#define QUILLON_HELPERS_TERMINAL_H

#include <string>
#include <vector>

namespace helpers {

// The command that runs WORDS in the terminal that TERMINAL names, else in x-terminal-emulator. Empty when
// there is neither.
std::vector<std::string> in_terminal(const std::vector<std::string> &words);

} // namespace helpers

#endif
