// The procedures in which the two fronts differ: the desktop front has windows, the headless front a script.
// Where a toolbox procedure only passes its arguments on to a front, its comment holds here too.
#ifndef QUILLON_FRONT_FRONT_H
#define QUILLON_FRONT_FRONT_H

#include <cstddef>

#include "toolbox/bounded.h"
#include "toolbox/dialogs.h"
#include "toolbox/events.h"
#include "toolbox/menus.h"
#include "toolbox/navigation.h"
#include "toolbox/text_engine.h"
#include "toolbox/windows.h"

namespace quillon {

class TextStore;

struct Front {
    const char *name; // "desktop" or "headless"

    // Sleeps until a source of the event loop is ready, something is posted, or MILLISECONDS have passed (-1:
    // no limit), and serves what is ready.
    void (*sleep)(int milliseconds);
    // Called when a wait for any event finds the queue empty. The headless front takes its next script step
    // then; 1 when it did something, else 0.
    int (*idle)();
    // Called when a wait for a tool finds nothing to do: a script step that cancels may be taken.
    void (*tool_wait)();
    // Called while the shell waits to come to the front: a script step that brings it there may be taken.
    void (*front_wait)();
    // Called with 0 when a run begins, during which no command can be chosen and the menus are disabled, and
    // with 1 when it has ended.
    void (*commands_admitted)(int admitted);
    // 1 while the shell is in front of the other programs, else 0.
    int (*is_front)();
    // Brings the shell to the front. The token comes from the desktop by way of the program that asks; it may
    // be null.
    void (*bring_to_front)(const char *activation_token);

    // Windows, the mouse pointer and the bell (toolbox/windows.h). show_window hides when SHOW is 0.
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
    // Asks for the person's attention (1), or takes the request back (0).
    void (*notify)(int on);
    // Dialogs (toolbox/dialogs.h, front/dialogs.h). NAME is one of the table's; the front derives what it
    // makes from Dialog, and is only asked for controls that the table has. set_control_text shortens the
    // text to the control's width when SHORTENED is 1; control_text then still gives the whole.
    Dialog *(*new_dialog)(const char *name);
    void (*dispose_dialog)(Dialog *dialog);
    void (*run_dialog)(Dialog *dialog);
    void (*end_dialog)(Dialog *dialog);
    void (*show_sheet)(Dialog *dialog, int show);
    void (*set_control_text)(Dialog *dialog, std::int16_t control, const char *text, int shortened);
    int (*control_text)(Dialog *dialog, std::int16_t control, BoundedBuffer &text);
    void (*set_control_value)(Dialog *dialog, std::int16_t control, int value);
    int (*control_value)(Dialog *dialog, std::int16_t control);
    void (*select_control)(Dialog *dialog, std::int16_t control);
    // Makes the row of the list whose number is that of the window's last row.
    void (*add_list_row)(Dialog *dialog, std::int16_t list, const char *text, const char *remark);
    int (*control_bounds)(Dialog *dialog, std::int16_t control, Rect *bounds);
    // Shows a chooser (toolbox/navigation.h).
    int (*navigate)(const NavRequest *request, BoundedBuffer &posix_path);

    // Shows the text of STORE, which belongs to the text engine, in the window; null takes the text away.
    void (*text_attach)(TextStore *store, WindowRef window);
    // The font of the console's text (toolbox/text_engine.h).
    void (*text_font)(const char *family, int size);
    int (*font_installed)(const char *family);
    // Called after SIZE bytes went into the store.
    void (*text_appended)(const void *data, std::size_t size);
    // Shows what was appended: when the display is due for it, or at once when FORCE is 1.
    void (*text_update)(int force);
    // Shows (1) or hides (0) the caret.
    void (*text_selection)(int shown);
    // Says whether the text has the keyboard and whether its window is in front (1 or 0; -1: as before).
    void (*text_focus)(int focus, int active);
    // Blinks the caret.
    void (*text_idle)();
    // Handles a click in the text.
    void (*text_click)(const EventRecord *event);

    // The procedures from here on may be null where there is no display.

    // Sets the distance of the text from the window's edges, in pixels.
    void (*text_margin)(int margin) = nullptr;
    // Puts the text that the person selected in the console on the clipboard, the whole text when nothing is
    // selected; its lines end with line feeds there.
    void (*copy_text)() = nullptr;
    // Copies the name of the installed font family number INDEX (from 0, by name): 1, or 0 past the end.
    int (*font_family)(int index, BoundedBuffer &family) = nullptr;
    // Lets the person select text of the console (1), or ignores clicks in it (0, as at first).
    void (*text_selectable)(int on) = nullptr;
    // Shows the bar that finds text in the console.
    void (*find_text)() = nullptr;
    // Asks the desktop for a fresh activation token, with which the program that the shell starts or raises
    // next may bring its window to the front. APP_ID is that program's name for the desktop; null when it is
    // not known. 1 with the token, or 0 with an empty text when the desktop gives none.
    int (*activation_token)(const char *app_id, BoundedBuffer &token) = nullptr;
    // Shows the window with the problems of the last run.
    void (*show_problems)() = nullptr;
    // Called when there are the problems of another run.
    void (*problems_changed)() = nullptr;
    // Called when the editor is asked to open the problem number INDEX.
    void (*problem_opened)(int index) = nullptr;
};

// The front in use, which the program sets before the shell starts.
extern const Front *front;

} // namespace quillon

#endif
