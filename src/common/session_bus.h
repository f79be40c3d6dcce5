// The session bus, and the names that Quillon's programs have on it.
#ifndef QUILLON_COMMON_SESSION_BUS_H
#define QUILLON_COMMON_SESSION_BUS_H

#include <algorithm>
#include <string>
#include <sys/types.h>
#include <systemd/sd-bus.h>
#include <vector>

#include "common/clock.h"

namespace common {

// The names that every application has. Its bus name is the prefix and its process id.
inline constexpr const char *application_name_prefix = "org.quillon.App.p";
inline constexpr const char *application_path = "/org/quillon/App";
inline constexpr const char *application_interface = "org.quillon.App1";
inline constexpr const char *tool_interface = "org.quillon.Tool1";
// The names that the shell has in addition.
inline constexpr const char *shell_name = "org.quillon.Shell";
inline constexpr const char *shell_path = "/org/quillon/Shell";
inline constexpr const char *shell_interface = "org.quillon.Shell1";
// Names that the bus and the desktop define.
inline constexpr const char *desktop_interface = "org.freedesktop.Application";
inline constexpr const char *properties_interface = "org.freedesktop.DBus.Properties";
inline constexpr const char *bus_name = "org.freedesktop.DBus";
inline constexpr const char *bus_path = "/org/freedesktop/DBus";
inline constexpr const char *bus_interface = "org.freedesktop.DBus";

// Returns the bus name of the application that runs as PROCESS.
std::string application_bus_name(pid_t process);
// True when NAME has the form of an application's bus name; PROCESS is then its process id.
bool process_of_bus_name(const char *name, pid_t *process);

// Puts this process, and what it starts from now on, on the session bus of the person where the shell was
// started with a bus of its own, which ends with it. Nothing happens where the two are one.
void leave_own_bus();
// Connects to the session bus and waits for its greeting, since the address may be that of a bus that is
// gone. Null when there is none. The caller closes the connection.
sd_bus *open_session_bus();
// True when a program on the bus owns NAME now. A question that fails counts as no.
bool name_has_owner(sd_bus *bus, const char *name);
// Returns the unique name of the program that owns NAME now. Empty when there is none, or no answer.
std::string owner_of_name(sd_bus *bus, const char *name);
// Returns the bus names of the applications that are on the bus now. Empty when the bus does not answer.
std::vector<std::string> application_names(sd_bus *bus);
// Sends MESSAGE as one that wants no answer, waits until the bus has it, and releases it. RESULT is the
// result of making the message: when it is negative, it is returned and nothing is sent. Returns a negative
// errno on failure.
int send_without_reply(sd_bus *bus, sd_bus_message *message, int result);
// Serves the bus until DONE, which what comes over the bus sets, or until the time END (now_microseconds).
template <typename Done> void serve_until(sd_bus *bus, std::uint64_t end, Done done) {
    while (!done() && now_microseconds() < end)
        if (const int result = sd_bus_process(bus, nullptr); result < 0)
            break;
        else if (result == 0)
            sd_bus_wait(bus, end - std::min(end, now_microseconds()));
}

} // namespace common

#endif
