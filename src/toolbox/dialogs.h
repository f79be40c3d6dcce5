// Dialogs: the modal windows of the interface file "Quillon". A window is made by its name; its controls are
// found by their numbers.
//
// A null window and a control that the window does not have are passed over by the procedures that change
// something; those that ask answer 0 or an empty text for them.
#ifndef QUILLON_TOOLBOX_DIALOGS_H
#define QUILLON_TOOLBOX_DIALOGS_H

#include <cstdint>

#include "toolbox/bounded.h"
#include "toolbox/types.h"

namespace quillon {

struct Dialog;
using DialogRef = Dialog *;

// What happened in a window: the mouse moved (class 'mous', kind 5) or the person used a control that does
// something (class 'cntl', kind 1).
struct DialogEvent {
    OSType event_class;
    std::int32_t kind;
    std::int16_t control; // the number of that control
    Point where;          // the mouse, in the window's own coordinates
};
enum : std::int32_t { kEventControlHit = 1, kEventMouseMoved = 5 };
// Answers 1 when it has handled the event, 0 to leave it to the system.
using DialogHandler = int (*)(DialogRef window, const DialogEvent *event);

// Makes the window of that name, not shown yet; null when the interface file has none. DisposeWindow ends it.
DialogRef CreateWindowFromNib(const char *name);
void DisposeWindow(DialogRef window);
// Set and ask the window's reference constant, 0 at first.
void SetWRefCon(DialogRef window, std::int32_t number);
std::int32_t GetWRefCon(DialogRef window);
// Makes HANDLER the procedure for the window's events.
void InstallWindowEventHandler(DialogRef window, DialogHandler handler);

// Shows the window and serves it until QuitAppModalLoopForWindow is called, by its handler as a rule. Closing
// the window and Escape are a hit of control 2; so is the end of the shell.
void RunAppModalLoopForWindow(DialogRef window);
void QuitAppModalLoopForWindow(DialogRef window);
// Show a window without buttons on the console window, and take it away.
void ShowSheetWindow(DialogRef window);
void HideSheetWindow(DialogRef window);

// Set and ask the text of a text field or a display, in bytes. A text that does not fit into TEXT leaves it
// empty (0).
void SetControlText(DialogRef window, std::int16_t control, const char *text);
int GetControlText(DialogRef window, std::int16_t control, BoundedBuffer &text);
// Shows TEXT in a display, shortened in its middle to the display's width less that of two blanks.
void SetShortenedText(DialogRef window, std::int16_t control, const char *text);
// Set and ask whether a check box is ticked.
void SetControlValue(DialogRef window, std::int16_t control, int value);
int GetControlValue(DialogRef window, std::int16_t control);
// Appends a row with a check box to the list of a window: its text, which is shown without its middle where
// there is no room, and a short remark. The rows of a list are controls too, from first_list_row on, which
// are ticked and asked as check boxes are. A window has one list at most, and a list most_list_rows; what is
// beyond is not added (0).
constexpr std::int16_t first_list_row = 101, most_list_rows = 9999;
int AddListRow(DialogRef window, std::int16_t list, const char *text, const char *remark, int ticked);
// Gives a text field the keyboard and selects its text from 0 to 300.
void SelectControlText(DialogRef window, std::int16_t control);
// Sets BOUNDS to the rectangle of a control in the window's own coordinates; 0 when there is none.
int GetControlBounds(DialogRef window, std::int16_t control, Rect *bounds);

} // namespace quillon

#endif
