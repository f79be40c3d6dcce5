// Opens application bundles, and applications on the session bus.
#ifndef QUILLON_HELPERS_BUNDLE_H
#define QUILLON_HELPERS_BUNDLE_H

#include <string>

#include "common/desktop_entry.h"

namespace helpers {

// Starts the bundle at the POSIX path PATH, or brings it forward when it runs, and sends it DOCUMENT (an
// absolute POSIX path, empty for none). Returns as soon as the request is made; false, with a sentence about
// the reason in PROBLEM, when it cannot be made.
bool open_bundle(const std::string &path, const std::string &document, std::string &problem);
// Asks the application of a desktop entry over the bus to open DOCUMENT, or to come forward when it is empty.
// False when there is no bus, or the application neither runs nor can be started by the bus.
bool open_on_bus(const common::DesktopEntry &entry, const std::string &document);

} // namespace helpers

#endif
