// Activation tokens for what the shell starts and raises.
#ifndef QUILLON_LINUX_EVENTS_TOKENS_H
#define QUILLON_LINUX_EVENTS_TOKENS_H

#include <string>

namespace quillon {

// Returns a token of the desktop for one program that the shell is about to start or to raise. APPLICATION is
// the POSIX path of its desktop entry, bundle or program, empty where that is not known. Empty where the
// desktop gives none, and while a run's end opens documents, since no window is to come forward then.
std::string fresh_token(const std::string &application);

} // namespace quillon

#endif
