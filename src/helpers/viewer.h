// Shows documents in viewers of the viewers table.
#ifndef QUILLON_HELPERS_VIEWER_H
#define QUILLON_HELPERS_VIEWER_H

#include <string>

#include "helpers/application.h"

namespace helpers {

// Shows DOCUMENT (an absolute POSIX path) in VIEWER. A viewer of the table that shows it already reads it
// again and is not started once more; its window comes forward when the person ASKED for it. While runs write
// source links, the viewer is told the line that was edited last. Any other application is given the
// document. False, with a sentence about the reason in PROBLEM, when the viewer cannot be started.
bool show_document(const common::Application &viewer, const std::string &document, bool asked,
                   std::string &problem);

} // namespace helpers

#endif
