#include "toolhost/window/open_window.h"

#include <algorithm>
#include <cstring>
#include <dlfcn.h>
#include <string>
#include <systemd/sd-event.h>

#include "common/places.h"
#include "toolhost/environment.h"
#include "toolhost/host.h"
#include "toolhost/window/tool_window.h"

namespace toolhost {

namespace {

std::string unread; // what was printed and the window has not taken yet

Host &host_of(void *context) {
    return *static_cast<Host *>(context);
}

void step(void *context) {
    Host &host = host_of(context);
    while (!host.leaving() && sd_event_get_state(host.events()) != SD_EVENT_FINISHED &&
           sd_event_run(host.events(), 0) > 0) {
    }
}

void state(void *context, ToolWindowState *state) {
    Host &host = host_of(context);
    const Run *const run = host.run();
    const bool ended =
        !host.busy() || host.leaving() || sd_event_get_state(host.events()) == SD_EVENT_FINISHED;
    *state = {};
    state->running = ended ? 0 : 1;
    if (ended)
        return;
    state->waiting = run->waiting() ? 1 : 0;
    state->cancelling = run->cancelled() ? 1 : 0;
    state->pages = run->pages();
    state->milliseconds = host.milliseconds();
    state->step = host.step().c_str();
}

std::size_t take_text(void *context, char *text, std::size_t room) {
    unread += host_of(context).take_window_text();
    const std::size_t size = std::min(room, unread.size());
    std::memcpy(text, unread.data(), size);
    unread.erase(0, size);
    return size;
}

void answer(void *context, const char *bytes, std::size_t size) {
    if (Run *const run = host_of(context).run(); run && !run->ended())
        run->answer({bytes, size});
}

void cancel(void *context) {
    if (Run *const run = host_of(context).run(); run && !run->ended())
        run->cancel(false);
}

ToolWindowProc load() {
    static ToolWindowProc window = nullptr;
    if (window)
        return window;
    const std::string plug_in = common::above_own_program(1) + "/tool-window.so";
    void *const library = dlopen(plug_in.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library)
        window = reinterpret_cast<ToolWindowProc>(dlsym(library, tool_window_symbol));
    return window;
}

} // namespace

bool open_window(Host &host) {
    const ToolWindowProc show = load();
    if (!show || !host.run())
        return false;
    unread.clear();
    ToolWindowHost procedures = {};
    procedures.context = &host;
    procedures.tool = host.bundle().tool.c_str();
    const std::string command = host.run()->command();
    procedures.command = command.c_str();
    procedures.answers_are_tex = is_engine(host.bundle().signature) || host.bundle().signature == "MPST";
    procedures.event_descriptor = sd_event_get_fd(host.events());
    procedures.step = step;
    procedures.state = state;
    procedures.take_text = take_text;
    procedures.answer = answer;
    procedures.cancel = cancel;
    return show(&procedures) != 0;
}

} // namespace toolhost
