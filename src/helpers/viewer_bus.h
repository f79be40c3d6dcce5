// Viewers that are told a place in the source over the session bus.
#ifndef QUILLON_HELPERS_VIEWER_BUS_H
#define QUILLON_HELPERS_VIEWER_BUS_H

#include <string>
#include <sys/types.h>

#include "common/application_table.h"
#include "helpers/source_place.h"

namespace helpers {

// Has the zathura that runs as PROCESS show PLACE, as soon as it has read its document, at most 30 seconds
// from now. Its window comes forward only when RAISE is true, or when this zathura cannot be told to leave it
// where it is.
void tell_zathura(pid_t process, const SourcePlace &place, bool raise);
// Has the Evince that shows DOCUMENT (an absolute POSIX path) show PLACE. PREFIXES are the beginnings that
// its bus names may have.
void tell_evince(const common::Words &prefixes, const std::string &document, const SourcePlace &place);
// Does so for an Evince that is just being started, as soon as it has loaded DOCUMENT, at most 30 seconds
// from now.
void tell_evince_when_there(const common::Words &prefixes, const std::string &document,
                            const SourcePlace &place);

} // namespace helpers

#endif
