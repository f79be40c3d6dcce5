// The windows of other programs on an X11 display.
#ifndef QUILLON_HELPERS_WINDOW_H
#define QUILLON_HELPERS_WINDOW_H

#include <sys/types.h>

namespace helpers {

// Asks the window manager to bring the windows of PROCESS to the front. Nothing happens where there is no X11
// display or no window of that process.
void raise_windows_of(pid_t process);

} // namespace helpers

#endif
