// The window of the set-up, a plug-in that is loaded only when it is shown.
#ifndef QUILLON_SETPATHS_OPEN_WINDOW_H
#define QUILLON_SETPATHS_OPEN_WINDOW_H

#include <string>

namespace setpaths {

// Shows the window until the person closes it, and puts the exit status of the program into STATUS. HOME is
// the binaries folder. False when there is no display or the window's plug-in is not installed.
bool open_window(const std::string &home, int *status);

} // namespace setpaths

#endif
