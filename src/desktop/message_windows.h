// The windows that tell or ask the person something.
#ifndef QUILLON_DESKTOP_MESSAGE_WINDOWS_H
#define QUILLON_DESKTOP_MESSAGE_WINDOWS_H

class QWidget;

namespace quillon::desktop {

// Shows the message window of that name (front/front.h) over PARENT until the person dismisses it: 1 by OK, 0
// by Cancel, or when there is no such window or the shell is asked to end.
int run_message_window(const char *name, QWidget *parent);

} // namespace quillon::desktop

#endif
