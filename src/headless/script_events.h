// Events that a script sends to the shell.
#ifndef QUILLON_HEADLESS_SCRIPT_EVENTS_H
#define QUILLON_HEADLESS_SCRIPT_EVENTS_H

#include <string>

namespace quillon {

// "CLASS ID [KEYWORD TYPE VALUE]...": queues the event; its reply is printed when it has been handled. A
// value of more than one word runs up to the next KEYWORD TYPE, or stands in quotes. Types: TEXT, long, fss
// (a POSIX path), list (POSIX paths).
void PostScriptEvent(const std::string &line);

} // namespace quillon

#endif
