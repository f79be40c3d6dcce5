// The keyboard focus for the tool's window, which belongs to another process than the shell that the person
// works in.
#ifndef QUILLON_TOOLHOST_WINDOW_FOCUS_H
#define QUILLON_TOOLHOST_WINDOW_FOCUS_H

class QWidget;

namespace toolhost {

// 1 while the shell or this process has the keyboard, or nobody has, or where the desktop does not tell; 0
// while the person works with another program.
int person_is_here();
// Asks for the focus for WINDOW and returns 1 when the active window is the shell's or this process's, or
// when there is none. Returns 0, and asks for nothing, when the person works in another application.
int take_focus(QWidget *window);

} // namespace toolhost

#endif
