// Opens the tool's window: the toolkit is loaded only now.
#ifndef QUILLON_TOOLHOST_WINDOW_OPEN_WINDOW_H
#define QUILLON_TOOLHOST_WINDOW_OPEN_WINDOW_H

namespace toolhost {

class Host;

// Shows the window and drives the host's events until the run has ended or the host leaves. False when there
// is no window to be had.
bool open_window(Host &host);

} // namespace toolhost

#endif
