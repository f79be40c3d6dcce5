// The keyboard for the first window of a program that another program started.
#ifndef QUILLON_WIDGETS_START_FOCUS_H
#define QUILLON_WIDGETS_START_FOCUS_H

class QWidget;

namespace widgets {

// Has WINDOW ask for the keyboard, on a Wayland display, with the activation token that this process was
// started with. It asks once, when it is first on the screen, since a token counts for such a window alone.
// Without a token, and on other displays, nothing happens.
void use_start_token(QWidget *window);

} // namespace widgets

#endif
