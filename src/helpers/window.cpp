#include "helpers/window.h"

#include <cstdlib>
#include <memory>
#include <string_view>
#include <xcb/res.h>
#include <xcb/xcb.h>

namespace helpers {

namespace {

constexpr std::uint32_t most_windows = 4096;
constexpr std::uint32_t from_a_pager = 2; // the source of a request that the person made

struct Free {
    void operator()(void *reply) const { std::free(reply); }
};
template <typename Reply> using Answer = std::unique_ptr<Reply, Free>;

xcb_atom_t atom(xcb_connection_t *display, std::string_view name) {
    const Answer<xcb_intern_atom_reply_t> answer(xcb_intern_atom_reply(
        display, xcb_intern_atom(display, 1, static_cast<std::uint16_t>(name.size()), name.data()), nullptr));
    return answer ? answer->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

// Returns the process that made the window; 0 when the display does not know it.
pid_t process_of(xcb_connection_t *display, xcb_window_t window) {
    const xcb_res_client_id_spec_t wanted = {window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const Answer<xcb_res_query_client_ids_reply_t> answer(
        xcb_res_query_client_ids_reply(display, xcb_res_query_client_ids(display, 1, &wanted), nullptr));
    if (!answer)
        return 0;
    for (auto ids = xcb_res_query_client_ids_ids_iterator(answer.get()); ids.rem > 0;
         xcb_res_client_id_value_next(&ids))
        if (xcb_res_client_id_value_value_length(ids.data) > 0)
            return static_cast<pid_t>(*xcb_res_client_id_value_value(ids.data));
    return 0;
}

void ask_for_front(xcb_connection_t *display, xcb_window_t root, xcb_window_t window, xcb_atom_t request) {
    xcb_client_message_event_t event = {};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = request;
    event.data.data32[0] = from_a_pager;
    xcb_send_event(display, 0, root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char *>(&event));
}

} // namespace

void raise_windows_of(pid_t process) {
    xcb_connection_t *const display = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(display) == 0) {
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(display)).data->root;
        const xcb_atom_t list = atom(display, "_NET_CLIENT_LIST"),
                         front = atom(display, "_NET_ACTIVE_WINDOW");
        const Answer<xcb_get_property_reply_t> windows(xcb_get_property_reply(
            display, xcb_get_property(display, 0, root, list, XCB_ATOM_WINDOW, 0, most_windows), nullptr));
        const int count = windows ? xcb_get_property_value_length(windows.get()) / 4 : 0;
        const auto *const each =
            count > 0 ? static_cast<const xcb_window_t *>(xcb_get_property_value(windows.get())) : nullptr;
        for (int i = 0; i < count; i++)
            if (process_of(display, each[i]) == process)
                ask_for_front(display, root, each[i], front);
        // The answer to a question says that everything before it was done.
        const Answer<xcb_get_input_focus_reply_t> done(
            xcb_get_input_focus_reply(display, xcb_get_input_focus(display), nullptr));
    }
    xcb_disconnect(display);
}

} // namespace helpers
