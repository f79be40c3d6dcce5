// What a run of an engine looked for, and what would change the answers.
#ifndef QUILLON_BACKGROUND_SNAPSHOT_SEARCH_H
#define QUILLON_BACKGROUND_SNAPSHOT_SEARCH_H

#include <string>

#include "toolhost/snapshots.h"

namespace background {

// Reads ERRORS, what an engine says on standard error with KPATHSEA_DEBUG=32, and adds to GROUND what the
// searches rest on: the folders of the search paths where the disk itself is asked, with all below them where
// a path says so, and the names that were looked for in the working folder FOLDER, an absolute POSIX path.
// The databases of the distribution are not added; who finds the format knows them. Names that begin like one
// of OWN are ours. Returns what keeps a
// preamble with such searches from being remembered, empty when nothing does.
//
// The engine itself is asked, since its recorder tells neither what it looked for in vain nor of which file
// it asked for the size or the sum.
std::string add_searches(const std::string &errors, const std::string &folder,
                         const std::vector<std::string> &own, toolhost::SnapshotGround *ground);

} // namespace background

#endif
