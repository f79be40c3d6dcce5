#include "toolhost/window/focus.h"

#include <QGuiApplication>
#include <QWidget>
#include <QWindow>
#include <cstdlib>
#include <cstring>
#include <unistd.h>
#include <xcb/xcb.h>

namespace toolhost {

namespace {

// The source of a request. Window managers grant one that a person made and refuse others.
constexpr std::uint32_t asked_by_person = 2;

xcb_atom_t atom(xcb_connection_t *connection, const char *name) {
    xcb_intern_atom_reply_t *const reply = xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(std::strlen(name)), name),
        nullptr);
    const xcb_atom_t value = reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
    std::free(reply);
    return value;
}

// Returns the first number of a window's property, 0 when it has none.
std::uint32_t property(xcb_connection_t *connection, xcb_window_t window, const char *name) {
    const auto request =
        xcb_get_property(connection, 0, window, atom(connection, name), XCB_GET_PROPERTY_TYPE_ANY, 0, 1);
    xcb_get_property_reply_t *const reply = xcb_get_property_reply(connection, request, nullptr);
    std::uint32_t value = 0;
    if (reply && reply->format == 32 && xcb_get_property_value_length(reply) >= 4)
        std::memcpy(&value, xcb_get_property_value(reply), sizeof value);
    std::free(reply);
    return value;
}

bool has_keyboard(xcb_connection_t *connection, xcb_window_t root) {
    const xcb_window_t active = property(connection, root, "_NET_ACTIVE_WINDOW");
    if (active == 0)
        return true;
    const std::uint32_t process = property(connection, active, "_NET_WM_PID");
    const char *const shell = std::getenv("QUILLON_SHELL_PID");
    // A window that has just gone, or does not say whose it is, counts for nobody.
    return process == 0 || process == static_cast<std::uint32_t>(getpid()) ||
           (shell && process == static_cast<std::uint32_t>(std::atoi(shell)));
}

void ask_window_manager(xcb_connection_t *connection, xcb_window_t root, xcb_window_t window) {
    xcb_client_message_event_t message = {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = atom(connection, "_NET_ACTIVE_WINDOW");
    message.data.data32[0] = asked_by_person;
    xcb_send_event(connection, 0, root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char *>(&message));
    xcb_flush(connection);
}

} // namespace

int person_is_here() {
    const auto *const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11 || !x11->connection())
        return 1;
    return has_keyboard(x11->connection(),
                        xcb_setup_roots_iterator(xcb_get_setup(x11->connection())).data->root);
}

int take_focus(QWidget *window) {
    const auto *const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    // Other platforms may answer with an interface that has no connection.
    if (!x11 || !x11->connection()) {
        // A Wayland compositor decides by the activation token that this process was started with, if any. It
        // counts once, and only for a window that is on the screen.
        if (window->windowHandle() && window->windowHandle()->isExposed())
            window->activateWindow();
        return 1;
    }
    xcb_connection_t *const connection = x11->connection();
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    if (!has_keyboard(connection, root))
        return 0;
    ask_window_manager(connection, root, static_cast<xcb_window_t>(window->winId()));
    return 1;
}

} // namespace toolhost
