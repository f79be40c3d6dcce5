// Shows documents in viewers of the viewers table.
#ifndef QUILLON_HELPERS_VIEWER_H
#define QUILLON_HELPERS_VIEWER_H

#include <string>

#include "helpers/application.h"
#include "helpers/source_place.h"

namespace helpers {

struct Showing {
    bool asked = true; // the person asked for it; else it is shown because a run has ended
    PlaceWish place;
    std::string remark; // filled where a place is wanted and none is shown: a sentence on why
};

// Shows DOCUMENT (an absolute POSIX path) in VIEWER. A viewer of the table that shows it already reads it
// again and is not started once more; its window comes forward when the person asked for it. While runs write
// source links, and when a place is wanted, the viewer is told the line that place_to_show names. Any other
// application is given the document. False, with a sentence about the reason in PROBLEM, when the viewer
// cannot be started.
bool show_document(const common::Application &viewer, const std::string &document, Showing &showing,
                   std::string &problem);

} // namespace helpers

#endif
