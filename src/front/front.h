// What the two fronts differ in: the desktop front has windows, the headless front a script.
#ifndef QUILLON_FRONT_FRONT_H
#define QUILLON_FRONT_FRONT_H

#include <cstddef>

#include "toolbox/bounded.h"
#include "toolbox/events.h"
#include "toolbox/menus.h"
#include "toolbox/navigation.h"
#include "toolbox/text_engine.h"
#include "toolbox/windows.h"

namespace quillon {

class TextStore;

struct Front {
    const char *name;

    // Events. sleep() returns when a source of the event loop has something, when something was posted, or
    // after MILLISECONDS (-1: no limit).
    void (*sleep)(int milliseconds);
    // A wait that admits every event found the queue empty: the headless front takes its next script step.
    // 1 when something was done.
    int (*idle)();
    // The wait for a tool found nothing: a script step that cancels may be taken.
    void (*tool_wait)();
    // The wait to be brought to the front found nothing: a script step that does it may be taken.
    void (*front_wait)();
    // 0 while a run admits no commands: the menus are shown disabled.
    void (*commands_admitted)(int admitted);
    int (*is_front)();
    void (*bring_to_front)(const char *activation_token);

    // Windows.
    WindowRef (*new_window)(const Rect *bounds, const char *title);
    void (*show_window)(WindowRef window, int show);
    void (*select_window)(WindowRef window);
    WindowRef (*front_window)();
    void (*window_bounds)(WindowRef window, Rect *bounds);
    void (*drag_window)(WindowRef window, Point where);
    void (*grow_window)(WindowRef window, Point where);
    WindowPart (*find_window)(const EventRecord *event, WindowRef *window);
    int (*screens)(Rect *screens, int room);
    void (*set_cursor)(CursorShape shape);
    void (*beep)();
    void (*notify)(int on);
    // Shows the message window of that name ("about box", "Quit", "ConfirmDelete", "LongName", "alert 900")
    // until it is dismissed: 1 by OK, 0 by Cancel.
    int (*message_window)(const char *name);
    int (*navigate)(const NavRequest *request, BoundedBuffer &posix_path);

    // The console's text. STORE belongs to the text engine.
    void (*text_attach)(TextStore *store, WindowRef window); // null store: detached
    void (*text_font)(const char *family, int size);
    int (*font_installed)(const char *family);
    void (*text_appended)(const void *data, std::size_t size); // after the bytes went into the store
    void (*text_update)(int force);
    void (*text_selection)(int shown);
    // 1 or 0; -1 leaves that one as it is.
    void (*text_focus)(int focus, int active);
    void (*text_idle)();
    void (*text_click)(const EventRecord *event);

    // The rest may be null where there is no display.
    void (*text_margin)(int margin) = nullptr;
    // Puts the console's whole text on the clipboard, with line feeds.
    void (*copy_text)() = nullptr;
    // The installed font families, from 0, by name; 0 past the end.
    int (*font_family)(int index, BoundedBuffer &family) = nullptr;
};

// The front in use, set before start-up.
extern const Front *front;

} // namespace quillon

#endif
