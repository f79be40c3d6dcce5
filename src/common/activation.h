// Activation tokens: what lets a desktop raise the window of a program that another program asked for.
#ifndef QUILLON_COMMON_ACTIVATION_H
#define QUILLON_COMMON_ACTIVATION_H

#include <string>
#include <systemd/sd-bus.h>

namespace common {

// Appends the platform data (a{sv}) that every call of org.freedesktop.Application ends with. It holds the
// token of XDG_ACTIVATION_TOKEN, else of DESKTOP_STARTUP_ID; without either it is empty. Returns a negative
// errno on failure.
int append_platform_data(sd_bus_message *message);
// Reads such data at the message's place. Returns its token, or an empty text when it holds none.
std::string read_platform_data(sd_bus_message *message);
// Asks the application with the bus name NAME and the object path OBJECT to come forward, and waits for no
// answer. Returns a negative errno when the call cannot be sent.
int send_activate(sd_bus *bus, const std::string &name, const std::string &object);

} // namespace common

#endif
