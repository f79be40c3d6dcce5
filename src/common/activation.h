// Activation tokens: what lets a desktop raise the window of a program that another program asked for.
#ifndef QUILLON_COMMON_ACTIVATION_H
#define QUILLON_COMMON_ACTIVATION_H

#include <string>
#include <systemd/sd-bus.h>

namespace common {

// Appends the platform data, a{sv}, of a call to org.freedesktop.Application: the token of this process's
// environment, or nothing. Negative errno on failure.
int append_platform_data(sd_bus_message *message);
// Reads such data from the message; the token, or an empty text when it holds none.
std::string read_platform_data(sd_bus_message *message);
// Asks the application NAME, whose object is OBJECT, to come forward, and waits for no answer. Negative errno
// when the call cannot be sent.
int send_activate(sd_bus *bus, const std::string &name, const std::string &object);

} // namespace common

#endif
