// Watching documents: the host's notices of changes, and what tools say of their prompts.
#include "toolbox/watching.h"

#include <cstring>
#include <string>

#include "common/document_watch.h"
#include "common/session_bus.h"
#include "linux/events/event_sources.h"
#include "linux/events/peers.h"
#include "linux/events/private_shell.h"

namespace quillon {

static common::DocumentWatch watch;
static sd_event_source *changes = nullptr, *moment = nullptr;
static sd_bus_slot *prompts = nullptr;
static int tool_at_prompt = 0;

// Sees to it that somebody looks at what was saved, when a burst is over. A run that waits for an answer may
// end at once.
static void look_when_due() {
    const int milliseconds = watch.due_in();
    if (milliseconds > 0 && moment) {
        sd_event_source_set_time_relative(moment, static_cast<std::uint64_t>(milliseconds) * 1000);
        sd_event_source_set_enabled(moment, SD_EVENT_ONESHOT);
    } else if (milliseconds == 0 || watch.changed_in_run()) {
        WakeUp();
    }
}

static int on_changes(sd_event_source *, int, std::uint32_t, void *) {
    watch.take_changes();
    look_when_due();
    return 0;
}

static int on_moment(sd_event_source *, std::uint64_t, void *) {
    look_when_due();
    return 0;
}

static int on_tool_properties(sd_bus_message *signal, void *, sd_bus_error *) {
    const char *interface = nullptr, *name = nullptr;
    if (!find_launched_by_owner(sd_bus_message_get_sender(signal)) ||
        sd_bus_message_read(signal, "s", &interface) < 0 ||
        std::strcmp(interface, common::tool_interface) != 0 ||
        sd_bus_message_enter_container(signal, 'a', "{sv}") < 0)
        return 0;
    while (sd_bus_message_enter_container(signal, 'e', "sv") > 0) {
        sd_bus_message_read(signal, "s", &name);
        if (std::strcmp(name, "Waiting") == 0)
            sd_bus_message_read(signal, "v", "b", &tool_at_prompt);
        else
            sd_bus_message_skip(signal, "v");
        sd_bus_message_exit_container(signal);
    }
    WakeUp();
    return 0;
}

// Makes the loop serve the watch, which has a descriptor of its own each time that it begins.
static void serve() {
    changes = sd_event_source_disable_unref(changes);
    if (watch.descriptor() < 0) {
        moment = sd_event_source_disable_unref(moment);
        prompts = sd_bus_slot_unref(prompts);
        return;
    }
    sd_event_add_io(HostLoop(), &changes, watch.descriptor(), EPOLLIN, on_changes, nullptr);
    if (!moment &&
        sd_event_add_time_relative(HostLoop(), &moment, CLOCK_MONOTONIC, 0, 1, on_moment, nullptr) >= 0)
        sd_event_source_set_enabled(moment, SD_EVENT_OFF);
    if (!prompts && HostBus())
        sd_bus_match_signal_async(HostBus(), &prompts, nullptr, common::application_path,
                                  common::properties_interface, "PropertiesChanged", on_tool_properties,
                                  nullptr, nullptr);
}

int WatchDocument(const char *main, BoundedBuffer &problem) {
    std::string reason;
    problem.clear();
    watch.end();
    if (main && !IsPrivate())
        watch.begin(main, &reason);
    serve();
    problem.copy_cut(reason);
    return reason.empty();
}

int WatchedFiles() {
    return static_cast<int>(watch.size());
}

int WatchedFileSaved() {
    return watch.due_in() == 0 && watch.take_due();
}

void WatchRunBegins() {
    tool_at_prompt = 0;
    if (WatchedFiles() > 0)
        watch.run_begins();
}

int SavedAtPrompt() {
    return tool_at_prompt && watch.changed_in_run();
}

int WatchRunEnded(const char *main, BoundedBuffer &problem, BoundedBuffer &endless) {
    std::string reason;
    problem.clear();
    endless.clear();
    if (WatchedFiles() == 0)
        return 1;
    watch.run_ended(main, &reason);
    // Another document has another descriptor, which may have the same number.
    serve();
    look_when_due();
    problem.copy_cut(reason);
    endless.copy_cut(watch.endless());
    return reason.empty();
}

} // namespace quillon
