// The desktop's own choice of applications, as proposals for viewers and the editor.
#ifndef QUILLON_SETPATHS_PROPOSALS_H
#define QUILLON_SETPATHS_PROPOSALS_H

#include <string>

namespace setpaths {

// The desktop entry (POSIX path) that opens files of that MIME type by default; empty when there is none.
std::string default_entry(const std::string &mime_type);

} // namespace setpaths

#endif
