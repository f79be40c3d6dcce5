// The step that prints a menu, a variable or a setting of the shell.
#ifndef QUILLON_HEADLESS_SCRIPT_PRINT_H
#define QUILLON_HEADLESS_SCRIPT_PRINT_H

#include <string>

namespace quillon {

// Prints what LINE asks for on standard output: "menu ID" the items of a menu, "state NAME" a variable,
// "setting KEY" a setting. A mistake in LINE is reported on standard error.
void PrintForScript(const std::string &line);

} // namespace quillon

#endif
