// Events that a script sends to the shell.
#ifndef QUILLON_HEADLESS_SCRIPT_EVENTS_H
#define QUILLON_HEADLESS_SCRIPT_EVENTS_H

#include <string>

namespace quillon {

// Queues the event that LINE, "CLASS ID [KEYWORD TYPE VALUE]...", describes, and prints its reply once it was
// handled. A value of more than one word reaches up to the next KEYWORD TYPE, or stands in quotes. The types
// are TEXT, long, fss (a POSIX path) and list (POSIX paths). A mistake in LINE is reported on standard error.
void PostScriptEvent(const std::string &line);

} // namespace quillon

#endif
