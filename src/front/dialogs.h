// The windows of the interface file, as both fronts know them: their names and the kinds of their controls.
#ifndef QUILLON_FRONT_DIALOGS_H
#define QUILLON_FRONT_DIALOGS_H

#include "toolbox/dialogs.h"

namespace quillon {

enum ControlKind { no_control, button_control, text_control, check_control, display_control, list_control };

// A row for each control of each window. A window without controls has one row of the kind no_control. The
// Designer file of the window (resources/) holds the same numbers; a test compares them.
struct DialogControl {
    const char *window;
    std::int16_t control;
    ControlKind kind;
};
extern const DialogControl dialog_controls[];
extern const int dialog_control_count;

// The kind of a control; no_control when the window has none of that number.
ControlKind kind_of_control(const char *window, std::int16_t control);
// 1 when the interface file has a window of that name.
int is_dialog(const char *window);

// What every front keeps of a window; a front derives its own from it.
struct Dialog {
    const char *name = nullptr; // that of its rows in the table
    std::int32_t number = 0;    // the reference constant
    DialogHandler handler = nullptr;
    std::int16_t list_rows = 0;
};

// The kind of a control of the window, the rows of its list among them.
ControlKind kind_in(const Dialog *dialog, std::int16_t control);

// Tells the window's handler that the control was hit.
void hit_control(Dialog *dialog, std::int16_t control);

} // namespace quillon

#endif
