// Whether a display can be opened, asked before the toolkit is: it ends the program when there is none.
#ifndef QUILLON_DESKTOP_DISPLAY_H
#define QUILLON_DESKTOP_DISPLAY_H

namespace quillon::desktop {

bool display_opens();

} // namespace quillon::desktop

#endif
