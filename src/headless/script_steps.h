// The steps of a script.
#ifndef QUILLON_HEADLESS_SCRIPT_STEPS_H
#define QUILLON_HEADLESS_SCRIPT_STEPS_H

#include <string>

namespace quillon {

// Does the step WORD with REST behind it. "dialog" reads its indented lines too. Returns 1 when the shell has
// to work before the next step, 0 when that can be taken at once. A step that is none is said on the standard
// error.
int TakeStep(const std::string &word, const std::string &rest);

} // namespace quillon

#endif
