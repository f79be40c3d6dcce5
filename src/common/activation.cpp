#include "common/activation.h"

#include <cstdlib>
#include <cstring>

#include "common/session_bus.h"

namespace common {

int append_platform_data(sd_bus_message *message) {
    const char *token = std::getenv("XDG_ACTIVATION_TOKEN");
    if (!token)
        token = std::getenv("DESKTOP_STARTUP_ID");
    if (!token)
        return sd_bus_message_append(message, "a{sv}", 0);
    return sd_bus_message_append(message, "a{sv}", 2, "activation-token", "s", token, "desktop-startup-id",
                                 "s", token);
}

std::string read_platform_data(sd_bus_message *message) {
    std::string token;
    if (sd_bus_message_enter_container(message, 'a', "{sv}") < 0)
        return token;
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
        const char *key = nullptr, *value = nullptr, *contents = nullptr;
        sd_bus_message_read(message, "s", &key);
        if (std::strcmp(key, "activation-token") == 0 &&
            sd_bus_message_peek_type(message, nullptr, &contents) > 0 && std::strcmp(contents, "s") == 0 &&
            sd_bus_message_read(message, "v", "s", &value) >= 0)
            token = value;
        else
            sd_bus_message_skip(message, "v");
        sd_bus_message_exit_container(message);
    }
    return token;
}

int send_activate(sd_bus *bus, const std::string &name, const std::string &object) {
    sd_bus_message *message = nullptr;
    int result = sd_bus_message_new_method_call(bus, &message, name.c_str(), object.c_str(),
                                                desktop_interface, "Activate");
    if (result >= 0)
        result = append_platform_data(message);
    return send_without_reply(bus, message, result);
}

} // namespace common
