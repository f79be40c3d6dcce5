// Activation tokens: what lets a desktop raise the window of a program that another program asked for.
#ifndef QUILLON_COMMON_ACTIVATION_H
#define QUILLON_COMMON_ACTIVATION_H

#include <string>
#include <string_view>
#include <systemd/sd-bus.h>
#include <vector>

namespace common {

// Returns the token that this process was started with: XDG_ACTIVATION_TOKEN, else DESKTOP_STARTUP_ID; empty
// without either.
std::string own_token();
// Takes the token out of this process's environment, so that what it starts from here on does not get it.
void forget_own_token();
// Puts TOKEN in place of the token that VARIABLES, each NAME=value, may have. An empty one changes nothing.
void put_token(std::vector<std::string> &variables, const std::string &token);
// True for the name of a variable that holds a token.
bool is_token_variable(std::string_view name);
// Appends the platform data (a{sv}) that every call of org.freedesktop.Application ends with. It holds TOKEN;
// without one it is empty. Returns a negative errno on failure.
int append_platform_data(sd_bus_message *message, const std::string &token);
// Reads such data at the message's place. Returns its token, or an empty text when it holds none.
std::string read_platform_data(sd_bus_message *message);
// Asks the application with the bus name NAME and the object path OBJECT to come forward with TOKEN, which
// may be empty, and waits for no answer. Returns a negative errno when the call cannot be sent.
int send_activate(sd_bus *bus, const std::string &name, const std::string &object, const std::string &token);

} // namespace common

#endif
