// Toolkits before Qt 6.5 have no call of their own for this, so the plug-in speaks xdg_activation_v1 itself:
// on the toolkit's connection, since a token is only worth something with the input that this connection got,
// and with a queue of its own, so that no event of the toolkit is served while it waits.
#include "desktop/wayland/tokens.h"

#include <QByteArray>
#include <QGuiApplication>
#include <QLibraryInfo>
#include <QVersionNumber>
#include <QWindow>
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <poll.h>
#include <qpa/qplatformnativeinterface.h>
#include <string>
#include <wayland-client.h>
#include <xdg-activation-v1-client-protocol.h>

namespace {

using Clock = std::chrono::steady_clock;

wl_display *display = nullptr;
wl_event_queue *queue = nullptr;         // never freed, as nothing of these
xdg_activation_v1 *activation = nullptr; // null when the compositor has no such protocol

// Sends what is queued, waits until the connection has something to read, at most until END, and reads it.
// False at the end of the time and when the connection is broken.
bool read_events(Clock::time_point end) {
    while (wl_display_prepare_read_queue(display, queue) != 0)
        if (wl_display_dispatch_queue_pending(display, queue) < 0)
            return false;
    wl_display_flush(display);
    int ready;
    do {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        pollfd source = {wl_display_get_fd(display), POLLIN, 0};
        ready = left > 0 ? poll(&source, 1, static_cast<int>(left)) : 0;
    } while (ready < 0 && errno == EINTR);
    if (ready > 0)
        return wl_display_read_events(display) == 0;
    wl_display_cancel_read(display);
    return false;
}

// Serves the own queue until DONE is set. False when that does not happen before END.
bool serve_until(const bool &done, Clock::time_point end) {
    while (!done) {
        if (wl_display_dispatch_queue_pending(display, queue) < 0)
            return false;
        if (!done && !read_events(end))
            return false;
    }
    return true;
}

void on_global(void *, wl_registry *registry, std::uint32_t name, const char *interface, std::uint32_t) {
    if (!activation && std::strcmp(interface, xdg_activation_v1_interface.name) == 0)
        activation = static_cast<xdg_activation_v1 *>(
            wl_registry_bind(registry, name, &xdg_activation_v1_interface, 1));
}

void on_global_gone(void *, wl_registry *, std::uint32_t) {}

void on_synced(void *done, wl_callback *, std::uint32_t) {
    *static_cast<bool *>(done) = true;
}

// Looks for the protocol among what the compositor has.
void bind_activation(Clock::time_point end) {
    static constexpr wl_registry_listener registry_listener = {on_global, on_global_gone};
    static constexpr wl_callback_listener callback_listener = {on_synced};
    bool done = false;
    queue = wl_display_create_queue(display);
    if (!queue)
        return;
    auto *const wrapper = static_cast<wl_display *>(wl_proxy_create_wrapper(display));
    wl_proxy_set_queue(reinterpret_cast<wl_proxy *>(wrapper), queue);
    wl_registry *const registry = wl_display_get_registry(wrapper);
    wl_callback *const callback = wl_display_sync(wrapper);
    wl_proxy_wrapper_destroy(wrapper);
    wl_registry_add_listener(registry, &registry_listener, nullptr);
    wl_callback_add_listener(callback, &callback_listener, &done);
    // The registry stays: what a slow compositor says too late for this start serves the next one.
    serve_until(done, end);
    wl_callback_destroy(callback);
}

struct Answer {
    std::string token;
    bool done = false;
};

void on_token(void *context, xdg_activation_token_v1 *, const char *token) {
    auto &answer = *static_cast<Answer *>(context);
    answer.token = token;
    answer.done = true;
}

// Returns what the toolkit has under NAME for its connection; null when it has nothing.
void *of_connection(const char *name) {
    return QGuiApplication::platformNativeInterface()->nativeResourceForIntegration(name);
}

std::string ask(wl_surface *surface, const char *app_id, Clock::time_point end) {
    static constexpr xdg_activation_token_v1_listener listener = {on_token};
    Answer answer;
    xdg_activation_token_v1 *const request = xdg_activation_v1_get_activation_token(activation);
    xdg_activation_token_v1_add_listener(request, &listener, &answer);
    // Without a keyboard or a pointer there is no seat, and the compositor decides without input.
    if (auto *const seat = static_cast<wl_seat *>(of_connection("wl_seat")))
        xdg_activation_token_v1_set_serial(
            request, static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(of_connection("serial"))),
            seat);
    if (app_id && *app_id)
        xdg_activation_token_v1_set_app_id(request, app_id);
    if (surface)
        xdg_activation_token_v1_set_surface(request, surface);
    xdg_activation_token_v1_commit(request);
    serve_until(answer.done, end);
    xdg_activation_token_v1_destroy(request);
    return answer.token;
}

// The toolkit's interface for such plug-ins may change with every minor version.
bool knows_toolkit() {
    const QVersionNumber runs = QLibraryInfo::version();
    return runs.majorVersion() == QT_VERSION_MAJOR && runs.minorVersion() == QT_VERSION_MINOR &&
           QGuiApplication::platformNativeInterface();
}

} // namespace

// See TokenProc.
extern "C" __attribute__((visibility("default"))) int
quillon_wayland_token(QWindow *window, const char *app_id, int milliseconds, char *token, std::size_t room) {
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(milliseconds);
    token[0] = '\0';
    if (!display) {
        display = knows_toolkit() ? static_cast<wl_display *>(of_connection("wl_display")) : nullptr;
        if (!display)
            return 0;
        bind_activation(end);
    }
    if (!queue || wl_display_dispatch_queue_pending(display, queue) < 0 || !activation)
        return 0;
    auto *const surface = static_cast<wl_surface *>(
        window && window->handle()
            ? QGuiApplication::platformNativeInterface()->nativeResourceForWindow("surface", window)
            : nullptr);
    const std::string given = ask(surface, app_id, end);
    if (given.empty() || given.size() >= room)
        return 0;
    std::memcpy(token, given.c_str(), given.size() + 1);
    return 1;
}
