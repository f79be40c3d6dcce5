// The proof that a snapshot changes nothing: what a run writes, prints and lists with it and without it.
#ifndef QUILLON_BACKGROUND_SNAPSHOT_PROOF_H
#define QUILLON_BACKGROUND_SNAPSHOT_PROOF_H

#include <string>

#include "background/snapshot_engine.h"

namespace background {

// Returns the name of a file that is not in both folders, or not with the same bytes in both; empty when
// there is none. The log and the recorder's list of the job JOB do not count.
std::string different_file(const std::string &one, const std::string &other, const std::string &job);

// Finds what the run BARE says, logs and lists for the preamble, which SNAP, the same run with the snapshot
// in the folder FORMAT, does not. False when the two differ in anything else than one piece each. The memory
// that the log counts at its end does not count.
bool find_texts(const Workshop &shop, const EngineRun &bare, const EngineRun &snap, const std::string &format,
                toolhost::SnapshotTexts *texts);

} // namespace background

#endif
