#include "common/activation.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "common/session_bus.h"

namespace common {

// The first is that of today's desktops; programs that are older read the second.
static constexpr const char *token_variables[] = {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"};

std::string own_token() {
    for (const char *const name : token_variables)
        if (const char *const token = std::getenv(name))
            return token;
    return {};
}

void forget_own_token() {
    for (const char *const name : token_variables)
        unsetenv(name);
}

bool is_token_variable(std::string_view name) {
    return std::find(std::begin(token_variables), std::end(token_variables), name) !=
           std::end(token_variables);
}

void put_token(std::vector<std::string> &variables, const std::string &token) {
    if (token.empty())
        return;
    std::erase_if(variables, [](const std::string &variable) {
        return is_token_variable(std::string_view(variable).substr(0, variable.find('=')));
    });
    for (const char *const name : token_variables)
        variables.push_back(std::string(name) + "=" + token);
}

int append_platform_data(sd_bus_message *message, const std::string &token) {
    if (token.empty())
        return sd_bus_message_append(message, "a{sv}", 0);
    return sd_bus_message_append(message, "a{sv}", 2, "activation-token", "s", token.c_str(),
                                 "desktop-startup-id", "s", token.c_str());
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

int send_activate(sd_bus *bus, const std::string &name, const std::string &object, const std::string &token) {
    sd_bus_message *message = nullptr;
    int result = sd_bus_message_new_method_call(bus, &message, name.c_str(), object.c_str(),
                                                desktop_interface, "Activate");
    if (result >= 0)
        result = append_platform_data(message, token);
    return send_without_reply(bus, message, result);
}

} // namespace common
