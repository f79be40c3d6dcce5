// Application bundles: started, or sent a document over the session bus.
#ifndef QUILLON_HELPERS_BUNDLE_H
#define QUILLON_HELPERS_BUNDLE_H

#include <string>

#include "helpers/desktop_entry.h"

namespace helpers {

// Starts the bundle at PATH, or brings it forward when it runs; DOCUMENT (empty: none) is sent to it. Returns
// as soon as the request is made; false, with what is wrong in PROBLEM, when it cannot be made.
bool open_bundle(const std::string &path, const std::string &document, std::string &problem);
// Asks the application of a desktop entry over the bus; false when the bus cannot start it.
bool open_on_bus(const DesktopEntry &entry, const std::string &document);

} // namespace helpers

#endif
