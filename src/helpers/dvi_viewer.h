// The viewer for DVI files, for which the bundle dviview stands.
#ifndef QUILLON_HELPERS_DVI_VIEWER_H
#define QUILLON_HELPERS_DVI_VIEWER_H

#include <string>

#include "helpers/viewer.h"

namespace helpers {

// The signature of that bundle.
inline constexpr const char *dviview_signature = "QVW8";

// Shows the DVI file DOCUMENT, an absolute POSIX path: in the application of the setting DVIPREVIEW, else in
// xdvi, as show_document does. False, with a sentence about the reason in PROBLEM, when there is no viewer.
bool show_dvi(const std::string &document, Showing &showing, std::string &problem);

} // namespace helpers

#endif
