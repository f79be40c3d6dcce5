// The applications that the desktop offers, and which of them a person would choose as editor or viewer.
#ifndef QUILLON_COMMON_OFFERED_APPLICATIONS_H
#define QUILLON_COMMON_OFFERED_APPLICATIONS_H

#include <string>
#include <vector>

#include "common/desktop_entry.h"

namespace common {

enum class Use { any, editor, pdf_viewer, postscript_viewer, dvi_viewer };

// Returns the applications that this desktop shows, ordered by name in the person's language. An entry in the
// person's own folder hides that of the same id in the system's folders. Quillon itself is not among them.
std::vector<DesktopEntry> installed_applications();
// Returns those of ENTRIES that open documents of that use, the likeliest choice first: what the desktop
// opens them with, then what the tables of editors and viewers know, then the rest. An editor is no viewer,
// whatever it says that it opens. For `any` they stay as they are.
std::vector<DesktopEntry> applications_for(Use use, const std::vector<DesktopEntry> &entries);
// Returns the POSIX path of the application that is proposed for that use: the first of those, unless it is
// neither the desktop's own choice nor known as an editor or a viewer. Empty when there is none.
std::string proposed_application(Use use, const std::vector<DesktopEntry> &entries);

} // namespace common

#endif
