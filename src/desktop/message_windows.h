// The windows that only say or ask something.
#ifndef QUILLON_DESKTOP_MESSAGE_WINDOWS_H
#define QUILLON_DESKTOP_MESSAGE_WINDOWS_H

class QWidget;

namespace quillon::desktop {

// Runs the window of that name until it is dismissed: 1 by OK, 0 by Cancel or when there is no such window.
int run_message_window(const char *name, QWidget *parent);

} // namespace quillon::desktop

#endif
