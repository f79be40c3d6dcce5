// Applications without a name on the bus: plain programs and desktop entries. They are started through the
// command `open`, as what they are.
#ifndef QUILLON_LINUX_EVENTS_PLAIN_PROGRAMS_H
#define QUILLON_LINUX_EVENTS_PLAIN_PROGRAMS_H

#include <string>
#include <vector>

#include "toolbox/types.h"

namespace quillon {

// An application that was launched and is not started yet, so that a document that follows as an event is
// given to it at its start. Without one it is started when the shell next waits for an event.
struct PendingStart {
    std::uint32_t number = 0; // the low word of its serial number, whose high word is psn_pending
    std::string path;         // POSIX path, as it was asked for
};
extern std::vector<PendingStart> pending_starts;

// Adds the application at the POSIX path PATH to those that are not started yet.
ProcessSerialNumber add_pending_start(const std::string &path);
// The application with that number; null when it was started. The entry holds until events are served.
const PendingStart *find_pending_start(std::uint32_t number);
// Takes the application with that number away from those that are not started yet.
void forget_pending_start(std::uint32_t number);
// Starts every application that is not started yet, without a document.
void start_pending_programs();
// Starts the application at the POSIX path APPLICATION, with the document at the POSIX path DOCUMENT unless
// that is null. permErr when it cannot be started; the reason is then on standard error.
OSErr open_in_application(const std::string &application, const char *document);
// What open_hints tells the commands of the pipe, as variables of the environment ("NAME=value"). FOLLOWS is
// the step after the command: "document", "line" or "nothing".
std::vector<std::string> hint_variables(const char *follows);
// Keeps PATH as the name under which the plain program PID was asked for, and answers it; a program may do
// different things under different names. Empty when it was not asked for.
void remember_asked_path(pid_t pid, const std::string &path);
std::string asked_path(pid_t pid);

} // namespace quillon

#endif
