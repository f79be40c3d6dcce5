// Starts the toolkit in programs that seldom show a window.
#ifndef QUILLON_WIDGETS_APPLICATION_H
#define QUILLON_WIDGETS_APPLICATION_H

namespace widgets {

// Makes the toolkit's application object at the first call; it is never freed, since the toolkit allows no
// second. False when no display can be opened.
bool make_window_application();

} // namespace widgets

#endif
