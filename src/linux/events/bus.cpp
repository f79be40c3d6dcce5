// The session bus: connects to it, offers this application on it, and tells the shell when it is lost.
#include <unistd.h>

#include "common/application_object.h"
#include "common/places.h"
#include "common/session_bus.h"
#include "linux/events/ae_receive.h"
#include "linux/events/event_sources.h"
#include "linux/events/peers.h"
#include "linux/events/private_shell.h"
#include "linux/events/shell_service.h"
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
    static common::ApplicationObject object = {
        "QUIL", "Quillon", common::own_program(),
        [](sd_bus_message *call, sd_bus_error *error) { return receive_application_event(call, error); }};
    common::serve_application(bus, &object);
    sd_bus_request_name_async(
        bus, nullptr, common::application_bus_name(getpid()).c_str(), 0,
        [](sd_bus_message *, void *, sd_bus_error *) { return 0; }, nullptr);
    return offer_shell_service(bus, !IsPrivate());
}

} // namespace quillon
