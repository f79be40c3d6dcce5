// The DVI previewer: the bundle dviview.app, which hands the documents that it is sent to the viewer for DVI
// files. It ends a moment after the last one.
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/types.h>
#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>
#include <unistd.h>

#include "common/activation.h"
#include "common/application_object.h"
#include "common/bundle.h"
#include "common/event_codec.h"
#include "common/session_bus.h"
#include "helpers/dvi_viewer.h"
#include "toolbox/types.h"

namespace {

constexpr std::uint64_t second = 1000000;
// How long it waits for its first document, and for another one.
constexpr std::uint64_t first_wait = 30 * second, next_wait = 2 * second;
// How long it waits at its end for the bus and for the shell.
constexpr std::uint64_t last_wait = 10 * second;

struct Previewer {
    sd_bus *bus = nullptr;
    sd_event *loop = nullptr;
    sd_event_source *end = nullptr;
    bool leaves = false;  // its name is being given back
    std::string reported; // who was told last why a document is not shown
};
Previewer previewer;

std::string own_name() {
    return common::application_bus_name(getpid());
}

int end_now(sd_bus_message *, void *, sd_bus_error *) {
    return sd_event_exit(previewer.loop, 0);
}

// The name is given back, and whatever was sent to it has come before that news. The shell forgets a program
// that has ended and has no name, so it must have read what it was told.
int name_is_back(sd_bus_message *, void *, sd_bus_error *) {
    if (previewer.reported.empty() ||
        sd_bus_call_method_async(previewer.bus, nullptr, previewer.reported.c_str(), "/",
                                 "org.freedesktop.DBus.Peer", "Ping", end_now, nullptr, nullptr) < 0)
        return sd_event_exit(previewer.loop, 0);
    return 0;
}

void leave() {
    if (previewer.leaves)
        return;
    previewer.leaves = true;
    // The shell ends a program without a name by this signal, which must not cut this end short. A viewer
    // that is started meanwhile has the usual action for it again.
    signal(SIGTERM, [](int) {});
    sd_bus_set_method_call_timeout(previewer.bus, last_wait);
    if (sd_bus_release_name_async(previewer.bus, nullptr, own_name().c_str(), name_is_back, nullptr) < 0)
        sd_event_exit(previewer.loop, 0);
}

int wait_is_over(sd_event_source *, std::uint64_t, void *) {
    leave();
    return 0;
}

// Tells whoever sent the document why it is not shown. The shell prints that.
void report(const char *sender, const std::string &problem) {
    sd_bus_message *message = nullptr;
    const common::Parameters parameters = {
        common::number_parameter("----", 1), common::text_parameter("said", "dviview: " + problem + "\r"),
        common::number_parameter("iden", common::code_number(helpers::dviview_signature))};
    const int result = common::new_event_call(previewer.bus, sender, {"aevt", "ansr", parameters}, &message);
    common::send_without_reply(previewer.bus, message, result);
    previewer.reported = sender;
}

std::int32_t show_documents(const common::Parameters &parameters, const char *sender) {
    const common::Parameter *const direct = common::find_parameter(parameters, "----");
    if (!direct)
        return quillon::errAEDescNotFound;
    for (const common::Parameter &item :
         direct->type == "list" ? direct->items : common::Parameters{*direct}) {
        std::string problem;
        helpers::Showing showing;
        showing.asked = false;
        if (item.type != "fss " || !item.bytes.starts_with('/'))
            return quillon::errAECoercionFail;
        if (!helpers::show_dvi(item.bytes, showing, problem))
            report(sender, problem);
        // The token of this process's start was for the first document.
        common::forget_own_token();
    }
    return quillon::noErr;
}

int take_event(sd_bus_message *call) {
    common::Event event;
    int result = common::read_event(call, event);
    if (result < 0)
        return result;
    const std::string name = event.event_class + "/" + event.id;
    std::int32_t error = quillon::noErr;
    if (name == "aevt/odoc") {
        error = show_documents(event.parameters, sd_bus_message_get_sender(call));
        if (!previewer.leaves)
            sd_event_source_set_time_relative(previewer.end, next_wait);
    } else if (name != "aevt/quit" && name != "aevt/oapp") {
        error = quillon::errAEEventNotHandled;
    }
    result = common::answer_event(call, error, {});
    if (name == "aevt/quit")
        leave();
    return result < 0 ? result : 1;
}

} // namespace

int main(int, char **words) {
    common::Bundle bundle;
    if (!common::find_bundle(words[0], bundle)) {
        std::fprintf(stderr, "%s: this program is started as dviview.app/Contents/Linux/dviview\n", words[0]);
        return 1;
    }
    common::ApplicationObject object = {
        bundle.signature, bundle.tool, bundle.path,
        [](sd_bus_message *call, sd_bus_error *) { return take_event(call); }};
    if (sd_event_new(&previewer.loop) < 0 ||
        sd_event_add_time_relative(previewer.loop, &previewer.end, CLOCK_MONOTONIC, first_wait, 0,
                                   wait_is_over, nullptr) < 0 ||
        !(previewer.bus = common::open_session_bus()) ||
        common::serve_application(previewer.bus, &object) < 0 ||
        sd_bus_attach_event(previewer.bus, previewer.loop, SD_EVENT_PRIORITY_NORMAL) < 0 ||
        sd_bus_request_name(previewer.bus, own_name().c_str(), 0) < 0) {
        std::fprintf(stderr, "dviview: there is no session bus\n");
        return 1;
    }
    sd_event_loop(previewer.loop);
    sd_event_source_unref(previewer.end);
    sd_bus_flush_close_unref(previewer.bus);
    sd_event_unref(previewer.loop);
    return 0;
}
