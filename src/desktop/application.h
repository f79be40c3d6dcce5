// The toolkit in programs that show a window only now and then.
#ifndef QUILLON_DESKTOP_APPLICATION_H
#define QUILLON_DESKTOP_APPLICATION_H

namespace quillon::desktop {

// Makes the application object, once: it lives as long as the process, since the toolkit allows no second.
// False when no display opens.
bool make_window_application();

} // namespace quillon::desktop

#endif
