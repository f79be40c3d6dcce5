#include "common/session_bus.h"

#include <cstdlib>
#include <cstring>
#include <string_view>

#include "common/places.h"

namespace common {

std::string application_bus_name(pid_t process) {
    return application_name_prefix + std::to_string(process);
}

bool process_of_bus_name(const char *name, pid_t *process) {
    const std::size_t length = std::strlen(application_name_prefix);
    if (std::strncmp(name, application_name_prefix, length) != 0)
        return false;
    char *end = nullptr;
    const long number = std::strtol(name + length, &end, 10);
    *process = static_cast<pid_t>(number);
    return number > 0 && *end == '\0';
}

void leave_own_bus() {
    const char *const before = std::getenv(own_bus_variable);
    if (!before)
        return;
    if (std::strcmp(before, "none") == 0)
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
    else
        setenv("DBUS_SESSION_BUS_ADDRESS", before, 1);
}

sd_bus *open_session_bus() {
    sd_bus *bus = nullptr;
    const char *unique = nullptr;
    if (sd_bus_open_user(&bus) < 0)
        return nullptr;
    // Only the greeting of the bus shows that somebody listens at the address.
    return sd_bus_get_unique_name(bus, &unique) < 0 ? sd_bus_close_unref(bus) : bus;
}

bool name_has_owner(sd_bus *bus, const char *name) {
    sd_bus_message *reply = nullptr;
    int owned = 0;
    if (sd_bus_call_method(bus, bus_name, bus_path, bus_interface, "NameHasOwner", nullptr, &reply, "s",
                           name) >= 0)
        sd_bus_message_read(reply, "b", &owned);
    sd_bus_message_unref(reply);
    return owned != 0;
}

std::string owner_of_name(sd_bus *bus, const char *name) {
    sd_bus_message *reply = nullptr;
    const char *owner = "";
    if (sd_bus_call_method(bus, bus_name, bus_path, bus_interface, "GetNameOwner", nullptr, &reply, "s",
                           name) >= 0)
        sd_bus_message_read(reply, "s", &owner);
    std::string result = owner;
    sd_bus_message_unref(reply);
    return result;
}

std::vector<std::string> application_names(sd_bus *bus) {
    std::vector<std::string> names;
    sd_bus_message *reply = nullptr;
    if (sd_bus_call_method(bus, bus_name, bus_path, bus_interface, "ListNames", nullptr, &reply, "") >= 0 &&
        sd_bus_message_enter_container(reply, 'a', "s") > 0) {
        const char *name = nullptr;
        while (sd_bus_message_read_basic(reply, 's', &name) > 0)
            if (std::string_view(name).starts_with(application_name_prefix))
                names.emplace_back(name);
    }
    sd_bus_message_unref(reply);
    return names;
}

int send_without_reply(sd_bus *bus, sd_bus_message *message, int result) {
    if (result >= 0)
        result = sd_bus_message_set_expect_reply(message, 0);
    if (result >= 0)
        result = sd_bus_send(bus, message, nullptr);
    if (result >= 0)
        result = sd_bus_flush(bus);
    sd_bus_message_unref(message);
    return result;
}

} // namespace common
