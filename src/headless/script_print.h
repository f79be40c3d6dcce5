// What a script prints of the shell.
#ifndef QUILLON_HEADLESS_SCRIPT_PRINT_H
#define QUILLON_HEADLESS_SCRIPT_PRINT_H

#include <string>

namespace quillon {

// "menu ID", "state NAME" or "setting KEY".
void PrintForScript(const std::string &line);

} // namespace quillon

#endif
