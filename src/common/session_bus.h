// The session bus, and the names that Quillon's programs have on it.
#ifndef QUILLON_COMMON_SESSION_BUS_H
#define QUILLON_COMMON_SESSION_BUS_H

#include <string>
#include <sys/types.h>
#include <systemd/sd-bus.h>
#include <vector>

namespace common {

// Every application: the bus name is the prefix and its process id.
inline constexpr const char *application_name_prefix = "org.quillon.App.p";
inline constexpr const char *application_path = "/org/quillon/App";
inline constexpr const char *application_interface = "org.quillon.App1";
inline constexpr const char *tool_interface = "org.quillon.Tool1";
// The shell.
inline constexpr const char *shell_name = "org.quillon.Shell";
inline constexpr const char *shell_path = "/org/quillon/Shell";
inline constexpr const char *shell_interface = "org.quillon.Shell1";
// What the bus and the desktop have defined.
inline constexpr const char *desktop_interface = "org.freedesktop.Application";
inline constexpr const char *properties_interface = "org.freedesktop.DBus.Properties";
inline constexpr const char *bus_name = "org.freedesktop.DBus";
inline constexpr const char *bus_path = "/org/freedesktop/DBus";
inline constexpr const char *bus_interface = "org.freedesktop.DBus";

std::string application_bus_name(pid_t process);
// True, and the process id, when NAME is that of an application.
bool process_of_bus_name(const char *name, pid_t *process);

// Connects, and waits for the bus to answer: the address may be that of a bus that has gone. Null when there
// is none to be had; the caller closes what it gets.
sd_bus *open_session_bus();
bool name_has_owner(sd_bus *bus, const char *name);
// The names of the applications that are on the bus now.
std::vector<std::string> application_names(sd_bus *bus);
// Sends MESSAGE, to which no answer is wanted, flushes the bus and drops the message. RESULT is what making
// the message came to; a negative one is passed on and nothing is sent. Negative errno on failure.
int send_without_reply(sd_bus *bus, sd_bus_message *message, int result);

} // namespace common

#endif
