// The windows that only say or ask something.
#ifndef QUILLON_DIALOGS_MESSAGE_WINDOWS_H
#define QUILLON_DIALOGS_MESSAGE_WINDOWS_H

namespace quillon {

void aboutApp();
// Says that there is no preferences file, then ends the program with status 0.
[[noreturn]] void DoQuit();
int ConfirmDelete(); // 1 when the person confirms
void longName();

} // namespace quillon

#endif
