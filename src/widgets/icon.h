// The shell's icon: a quill over a page.
#ifndef QUILLON_WIDGETS_ICON_H
#define QUILLON_WIDGETS_ICON_H

#include <QIcon>

namespace widgets {

// The installed icon, else the same one drawn here in five sizes.
QIcon shell_icon();

} // namespace widgets

#endif
