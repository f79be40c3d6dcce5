// Tells whether a display can be opened. It is asked before the toolkit is started, which ends the program
// when there is none.
#ifndef QUILLON_WIDGETS_DISPLAY_H
#define QUILLON_WIDGETS_DISPLAY_H

namespace widgets {

// True when the display of the environment (Wayland, X11, or the one that QT_QPA_PLATFORM names) can be
// opened. A named one other than X11 is taken at its word.
bool display_opens();

} // namespace widgets

#endif
