// Opens the tool's window. Only this loads the toolkit.
#ifndef QUILLON_TOOLHOST_WINDOW_OPEN_WINDOW_H
#define QUILLON_TOOLHOST_WINDOW_OPEN_WINDOW_H

namespace toolhost {

class Host;

// Shows the window and serves the host's events until the run has ended or the host quits. False when there
// is no window: the plug-in is not there, the desktop shows none, or nothing was run.
bool open_window(Host &host);

} // namespace toolhost

#endif
