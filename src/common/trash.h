// The desktop's trash of this user: $XDG_DATA_HOME/Trash, as the desktops of freedesktop.org have it.
#ifndef QUILLON_COMMON_TRASH_H
#define QUILLON_COMMON_TRASH_H

#include <string>

namespace common {

// True when the trash is on the file system of the file at PATH, an absolute POSIX path, and can be written.
// It is made when it is missing.
bool trash_takes(const std::string &path);
// Moves the file at PATH, an absolute POSIX path, to the trash, from which the desktop can put it back.
// False, with the file where it was, when that is not possible: the trash is on another file system, or
// cannot be written.
bool move_to_trash(const std::string &path);

} // namespace common

#endif
