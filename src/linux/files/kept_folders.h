// The folders that one stretch of look-ups goes back to, held open: a file then costs the system one name to
// look up instead of the whole path.
#ifndef QUILLON_LINUX_FILES_KEPT_FOLDERS_H
#define QUILLON_LINUX_FILES_KEPT_FOLDERS_H

#include <string_view>

namespace quillon {

// FOLDER: an absolute POSIX path without a last "/". A descriptor to look names up in, or -1 when the folder
// is asked for the first time, has gone or cannot be held; the whole path serves then. The descriptor is not
// the caller's to close and holds good until the next call.
int KeptFolder(std::string_view folder);
// To be called wherever others may have moved folders and then told us: after a wait, after a command.
void ForgetFolders();

} // namespace quillon

#endif
