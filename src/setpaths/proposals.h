// The applications that the desktop itself has chosen. The set-up proposes them as viewers and editor.
#ifndef QUILLON_SETPATHS_PROPOSALS_H
#define QUILLON_SETPATHS_PROPOSALS_H

#include <string>

namespace setpaths {

// Returns the POSIX path of the desktop entry that opens files of that MIME type by default, else of any that
// opens them, but never one of Quillon's own. Empty when there is none.
std::string default_entry(const std::string &mime_type);

} // namespace setpaths

#endif
