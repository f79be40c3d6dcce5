// The folder of the snapshots: what is kept there, for how long, and how much work it may cost.
#ifndef QUILLON_BACKGROUND_SNAPSHOT_STORE_H
#define QUILLON_BACKGROUND_SNAPSHOT_STORE_H

#include <cstdint>
#include <string>

#include "toolhost/snapshots.h"

namespace background {

// Makes the folder of the snapshots and removes what is in it of runs that were ended early, old notes, and
// snapshots that no note names. False when the folder cannot be made, or is not this user's own.
bool tidy_snapshots();

// Moves what a snapshot consists of into the folder: the unpacked format at FORMAT, and TEXTS. Nothing is
// under the name that it returns before it is whole. The snapshots that were not used for the longest time go
// until there is room. Returns an empty name when it cannot be kept.
std::string keep_snapshot(const toolhost::SnapshotCall &call, const std::string &format,
                          const toolhost::SnapshotTexts &texts);

// The work of a day: true while it is less than an hour; SECONDS more of it are noted.
bool work_is_left();
void note_work(std::uint64_t seconds);

} // namespace background

#endif
