// A file that is opened and then shown at a line is opened once: the start of the first command waits a
// moment for the second, which takes it over.
#ifndef QUILLON_HELPERS_HAND_OVER_H
#define QUILLON_HELPERS_HAND_OVER_H

#include <string>

namespace helpers {

// Says that DOCUMENT is about to be opened: a mark in the temporary folder; empty when it cannot be made.
std::string leave_mark(const std::string &document);
// Waits for somebody to take the mark: false when it was taken, true when the time is up and it is ours
// again.
bool mark_is_left(const std::string &mark);
// 1 when DOCUMENT was about to be opened: whoever waited leaves it now.
bool take_mark(const std::string &document);

} // namespace helpers

#endif
