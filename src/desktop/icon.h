// The shell's icon: a quill over a page.
#ifndef QUILLON_DESKTOP_ICON_H
#define QUILLON_DESKTOP_ICON_H

#include <QIcon>

namespace quillon::desktop {

// The installed icon, else the same drawn here.
QIcon shell_icon();

} // namespace quillon::desktop

#endif
