// The windows of the interface file on screen. Each is a Designer file of the folder resources/ that names
// the window (windowName) and numbers its controls (controlID).
#ifndef QUILLON_DESKTOP_DIALOGS_H
#define QUILLON_DESKTOP_DIALOGS_H

#include <cstdint>

#include "front/dialogs.h"
#include "toolbox/bounded.h"

namespace quillon::desktop {

// The front's procedures for dialogs (front/front.h). A dialog stands over the modal window that is open,
// else over the main window when that is shown.
Dialog *new_dialog(const char *name);
void dispose_dialog(Dialog *dialog);
void run_dialog(Dialog *dialog);
void end_dialog(Dialog *dialog);
void show_sheet(Dialog *dialog, int show);
void set_control_text(Dialog *dialog, std::int16_t control, const char *text, int shortened);
int control_text(Dialog *dialog, std::int16_t control, BoundedBuffer &text);
void set_control_value(Dialog *dialog, std::int16_t control, int value);
int control_value(Dialog *dialog, std::int16_t control);
void add_list_row(Dialog *dialog, std::int16_t list, const char *text, const char *remark);
void select_control(Dialog *dialog, std::int16_t control);
int control_bounds(Dialog *dialog, std::int16_t control, Rect *bounds);

} // namespace quillon::desktop

#endif
