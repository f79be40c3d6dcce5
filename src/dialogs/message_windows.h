// These windows show a message or ask a question.
#ifndef QUILLON_DIALOGS_MESSAGE_WINDOWS_H
#define QUILLON_DIALOGS_MESSAGE_WINDOWS_H

namespace quillon {

// Shows the window that says which program this is.
void aboutApp();
// Says that there is no preferences file, then ends the program with status 0.
[[noreturn]] void DoQuit();
// Asks whether a recent file that cannot be opened is to be removed. Returns 1 when the person confirms.
int ConfirmDelete();
// Says that a file's name is too long.
void longName();

} // namespace quillon

#endif
