// The toolkit in programs that show a window only now and then.
#ifndef QUILLON_WIDGETS_APPLICATION_H
#define QUILLON_WIDGETS_APPLICATION_H

namespace widgets {

// Makes the application object, once: it lives as long as the process, since the toolkit allows no second.
// False when no display opens.
bool make_window_application();

} // namespace widgets

#endif
