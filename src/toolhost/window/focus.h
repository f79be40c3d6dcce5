// The keyboard focus for a window whose process is not the one that the person works in.
#ifndef QUILLON_TOOLHOST_WINDOW_FOCUS_H
#define QUILLON_TOOLHOST_WINDOW_FOCUS_H

class QWidget;

namespace toolhost {

// Gives WINDOW the focus when the person is at the shell that started this process, or at nothing at all; in
// another application they are left alone, and 0 says so.
int take_focus(QWidget *window);

} // namespace toolhost

#endif
