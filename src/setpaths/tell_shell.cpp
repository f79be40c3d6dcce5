#include "setpaths/tell_shell.h"

#include "common/event_codec.h"
#include "common/session_bus.h"

namespace setpaths {

void tell_shell() {
    sd_bus *const bus = common::open_session_bus();
    if (!bus)
        return;
    if (const std::string shell = common::owner_of_name(bus, common::shell_name); !shell.empty()) {
        sd_bus_message *call = nullptr;
        const int result = common::new_event_call(bus, shell, {"QUIL", "sett", {}}, &call);
        common::send_without_reply(bus, call, result);
    }
    sd_bus_flush_close_unref(bus);
}

} // namespace setpaths
