// Whether a display can be opened, asked before the toolkit is: it ends the program when there is none.
#ifndef QUILLON_WIDGETS_DISPLAY_H
#define QUILLON_WIDGETS_DISPLAY_H

namespace widgets {

bool display_opens();

} // namespace widgets

#endif
