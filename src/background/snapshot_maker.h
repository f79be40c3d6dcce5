// Makes the snapshot of a document's preamble, and proves it before it is used.
#ifndef QUILLON_BACKGROUND_SNAPSHOT_MAKER_H
#define QUILLON_BACKGROUND_SNAPSHOT_MAKER_H

#include <functional>
#include <string>

#include "toolhost/snapshots.h"

namespace background {

// Makes the snapshot for CALL in ENVIRONMENT (as the host makes it), unless there is one or the preamble was
// refused: typesets the document twice without it, dumps the preamble, typesets once more with the dump, and
// keeps it only when every output file but the log has the same bytes. DRIVER is the TeX file that dumps.
// GOES_ON is asked between pieces of work; when it answers false, nothing more is done and nothing is kept.
// What cannot be remembered is written down as refused, so that it is not tried again before something
// changes. Returns what came of it, for a person who runs this by hand.
std::string make_snapshot(const toolhost::SnapshotCall &call, const toolhost::Variables &environment,
                          const std::string &driver, const std::function<bool()> &goes_on);

} // namespace background

#endif
