// The shell's icon: a quill over a page.
#ifndef QUILLON_WIDGETS_ICON_H
#define QUILLON_WIDGETS_ICON_H

#include <QIcon>

namespace widgets {

// The installed icon, else the same drawn here.
QIcon shell_icon();

} // namespace widgets

#endif
