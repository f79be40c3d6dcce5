// What all dialogs share: how one is opened and run, the one handler of their events, and the checks of OK.
#ifndef QUILLON_DIALOGS_DIALOG_H
#define QUILLON_DIALOGS_DIALOG_H

#include <cstddef>
#include <cstdint>

#include "toolbox/dialogs.h"

namespace quillon {

// The numbers of controls that every dialog has, and of the button that chooses something in most.
enum : std::int16_t { control_ok = 1, control_cancel = 2, control_choose = 3 };

// The numbers of the dialogs, which are their windows' reference constants. Message windows have none (0).
enum DialogNumber : std::int32_t {
    dialog_message = 0,
    dialog_font_size = 128,
    dialog_command_line = 129,
    dialog_dvips_run = 130,
    dialog_makeindex = 131,
    dialog_applications = 133,
    dialog_dvips = 139,
    dialog_bibtex8 = 142,
    dialog_pdftex = 143,
    dialog_package = 301,
    dialog_clean = 302,
    dialog_command_key = 500,
};

// A text field and the bytes that its text may have. OK is refused while it has more.
struct TextField {
    std::int16_t control;
    std::size_t limit;
};
constexpr int most_text_fields = 4;

// One row a dialog.
struct DialogRow {
    DialogNumber number;
    const char *window;                 // its name in the interface file
    TextField fields[most_text_fields]; // those with a control of 0 are not there
    // Answers 1 when OK may close the dialog; otherwise it has beeped where that is due. May be null.
    int (*accepts)(DialogRef window);
    // Does the work of a button other than OK and Cancel. May be null.
    void (*chooses)(DialogRef window, std::int16_t control);
};
extern const DialogRow dialog_rows[];
extern const int dialog_row_count;

// 1 after a dialog was closed by Cancel, 0 after OK.
extern std::uint8_t cancelDialog;

// Makes the window of a dialog and clears cancelDialog. Null when there is no such window.
DialogRef open_dialog(DialogNumber number);
// Runs the dialog until the person closes it: 1 when it was confirmed. Its window stays until DisposeWindow.
int run_dialog(DialogRef window);
// Shows a message window until the person closes it: 1 by OK, 0 by Cancel.
int run_message(const char *name);
// Beeps and selects the text of a field whose entry OK refuses. Answers 0.
int refuse(DialogRef window, std::int16_t control);
// Shows a Unix path with its blanks, shortened to the width of the display.
void show_path(DialogRef window, std::int16_t control, const char *path);

// Handles the events of every dialog: 1 for the mouse, OK, Cancel and the buttons of its row, else 0.
int dialogEventHandler(DialogRef window, const DialogEvent *event);
// Shows the text cursor while the point (in the window's coordinates) is in one of the dialog's text fields,
// else the arrow.
void ChangeEditCursor(DialogRef window, Point point);

} // namespace quillon

#endif
