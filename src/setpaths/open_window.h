// The set-up's window: a plug-in that is loaded only when it is shown.
#ifndef QUILLON_SETPATHS_OPEN_WINDOW_H
#define QUILLON_SETPATHS_OPEN_WINDOW_H

#include <string>

namespace setpaths {

// Shows the window until the person is done, and says in STATUS how the program is to exit. False when there
// is no display, or no such window is installed. HOME is the binaries folder.
bool open_window(const std::string &home, int *status);

} // namespace setpaths

#endif
