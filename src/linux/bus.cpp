// The session bus: connecting, this application's own name and properties, and the loss of the bus.
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "linux/ae_receive.h"
#include "linux/event_sources.h"
#include "linux/peers.h"
#include "linux/shell_service.h"
#include "toolbox/apple_events.h"

namespace quillon {

static sd_bus *bus = nullptr;

sd_bus *HostBus() {
    return bus && sd_bus_is_open(bus) > 0 ? bus : nullptr;
}

static int on_disconnected(sd_bus_message *, void *, sd_bus_error *) {
    PostHighLevelEvent(four("QUIL"), four("gone"), 0);
    return 0;
}

static int property_signature(sd_bus *, const char *, const char *, const char *, sd_bus_message *reply,
                              void *, sd_bus_error *) {
    return sd_bus_message_append(reply, "s", "QUIL");
}

static int property_name(sd_bus *, const char *, const char *, const char *, sd_bus_message *reply, void *,
                         sd_bus_error *) {
    return sd_bus_message_append(reply, "s", "Quillon");
}

static int property_path(sd_bus *, const char *, const char *, const char *, sd_bus_message *reply, void *,
                         sd_bus_error *) {
    char path[4096];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
    return sd_bus_message_append(reply, "s", length > 0 ? (path[length] = '\0', path) : "");
}

static const sd_bus_vtable application_interface[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("Signature", "s", property_signature, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Name", "s", property_name, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Path", "s", property_path, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_METHOD("Event", "ssa{s(sv)}", "ia{s(sv)}", receive_application_event, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

int ConnectHostBus() {
    if (bus)
        return HostBus() != nullptr;
    if (sd_bus_open_user(&bus) < 0) {
        bus = nullptr;
        return 0;
    }
    sd_bus_attach_event(bus, HostLoop(), SD_EVENT_PRIORITY_NORMAL);
    sd_bus_match_signal_async(bus, nullptr, "org.freedesktop.DBus.Local", "/org/freedesktop/DBus/Local",
                              "org.freedesktop.DBus.Local", "Disconnected", on_disconnected, nullptr,
                              nullptr);
    watch_bus_names(bus);
    sd_bus_add_object_vtable(bus, nullptr, "/org/quillon/App", "org.quillon.App1", application_interface,
                             nullptr);
    char own_name[64];
    std::snprintf(own_name, sizeof own_name, "org.quillon.App.p%d", static_cast<int>(getpid()));
    sd_bus_request_name_async(
        bus, nullptr, own_name, 0, [](sd_bus_message *, void *, sd_bus_error *) { return 0; }, nullptr);
    return offer_shell_service(bus);
}

} // namespace quillon
