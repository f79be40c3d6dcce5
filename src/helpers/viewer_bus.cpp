#include "helpers/viewer_bus.h"

#include <algorithm>
#include <csignal>
#include <systemd/sd-bus.h>

#include "common/clock.h"
#include "common/path_forms.h"
#include "common/session_bus.h"

namespace helpers {

namespace {

constexpr std::uint64_t answer_microseconds = 2'000'000;
constexpr std::uint64_t load_microseconds = 30'000'000;
constexpr std::uint64_t again_microseconds = 50'000, settle_microseconds = 600'000;

// A connection whose calls wait two seconds for their answer, closed at the end of the scope.
struct Bus {
    sd_bus *connection = common::open_session_bus();
    Bus() {
        if (connection)
            sd_bus_set_method_call_timeout(connection, answer_microseconds);
    }
    ~Bus() { sd_bus_flush_close_unref(connection); }
    Bus(const Bus &) = delete;
    Bus &operator=(const Bus &) = delete;
};

void serve_for(sd_bus *bus, std::uint64_t microseconds) {
    common::serve_until(bus, common::now_microseconds() + microseconds, [] { return false; });
}

// Returns the beginning of the object paths of a program whose bus names begin with PREFIX.
std::string object_path(std::string prefix) {
    std::replace(prefix.begin(), prefix.end(), '.', '/');
    return "/" + prefix;
}

void sync_view(sd_bus *bus, const std::string &prefix, const char *owner, const char *window,
               const SourcePlace &place) {
    sd_bus_message *call = nullptr;
    int result =
        sd_bus_message_new_method_call(bus, &call, owner, window, (prefix + ".Window").c_str(), "SyncView");
    // A column of -1 is none, and a time of 0 asks for no window to come forward.
    if (result >= 0)
        result =
            sd_bus_message_append(call, "s(ii)u", place.file.c_str(), static_cast<int>(place.line), -1, 0U);
    common::send_without_reply(bus, call, result);
}

// Returns the bus name of the Evince that shows the document, empty when none does.
std::string evince_of(sd_bus *bus, const std::string &prefix, const std::string &document) {
    sd_bus_message *reply = nullptr;
    const char *owner = "";
    const std::string daemon = prefix + ".Daemon";
    std::string found;
    if (sd_bus_call_method(bus, daemon.c_str(), (object_path(prefix) + "/Daemon").c_str(), daemon.c_str(),
                           "FindDocument", nullptr, &reply, "sb", common::file_uri(document).c_str(),
                           0) >= 0 &&
        sd_bus_message_read(reply, "s", &owner) > 0)
        found = owner;
    sd_bus_message_unref(reply);
    return found;
}

struct Loading {
    std::string uri;
    std::string owner, window; // set when the document is there
};

int on_loaded(sd_bus_message *signal, void *context, sd_bus_error *) {
    Loading &loading = *static_cast<Loading *>(context);
    const char *uri = "";
    if (sd_bus_message_read(signal, "s", &uri) > 0 && loading.uri == uri) {
        loading.owner = sd_bus_message_get_sender(signal);
        loading.window = sd_bus_message_get_path(signal);
    }
    return 0;
}

} // namespace

void tell_zathura(pid_t process, const SourcePlace &place, bool raise) {
    const Bus bus;
    const std::string name = "org.pwmt.zathura.PID-" + std::to_string(process);
    const auto call = [&](const char *method, const char *types, auto... values) {
        return sd_bus_call_method(bus.connection, name.c_str(), "/org/pwmt/zathura", "org.pwmt.zathura",
                                  method, nullptr, nullptr, types, values...);
    };
    if (!bus.connection)
        return;
    call("ExecuteCommand", "s", raise ? "set dbus-raise-window true" : "set dbus-raise-window false");
    // It refuses while it is reading the document again.
    const std::uint64_t end = common::now_microseconds() + load_microseconds;
    while (call("SynctexView", "suu", place.file.c_str(), static_cast<unsigned>(place.line), 1U) < 0 &&
           kill(process, 0) == 0 && common::now_microseconds() < end)
        serve_for(bus.connection, again_microseconds);
}

void tell_evince(const common::Words &prefixes, const std::string &document, const SourcePlace &place) {
    const Bus bus;
    for (const std::string &prefix : prefixes) {
        const std::string owner = bus.connection ? evince_of(bus.connection, prefix, document) : "";
        if (owner.empty())
            continue;
        // Each document has a process of its own, with one window.
        sync_view(bus.connection, prefix, owner.c_str(), (object_path(prefix) + "/Window/0").c_str(), place);
        return;
    }
}

void tell_evince_when_there(const common::Words &prefixes, const std::string &document,
                            const SourcePlace &place) {
    const Bus bus;
    Loading loading = {common::file_uri(document), "", ""};
    if (!bus.connection)
        return;
    for (const std::string &prefix : prefixes)
        sd_bus_add_match(bus.connection, nullptr,
                         ("type='signal',member='DocumentLoaded',interface='" + prefix + ".Window'").c_str(),
                         on_loaded, &loading);
    common::serve_until(bus.connection, common::now_microseconds() + load_microseconds,
                        [&] { return !loading.owner.empty(); });
    // A window that is still being set up forgets the place, so it is told twice.
    for (int time = 0; time < 2; time++)
        for (const std::string &prefix : prefixes)
            if (loading.window.starts_with(object_path(prefix) + "/")) {
                sync_view(bus.connection, prefix, loading.owner.c_str(), loading.window.c_str(), place);
                serve_for(bus.connection, settle_microseconds);
            }
}

} // namespace helpers
