// The proof that a snapshot changes nothing: what a run writes, prints and lists with it and without it.
#ifndef QUILLON_BACKGROUND_SNAPSHOT_PROOF_H
#define QUILLON_BACKGROUND_SNAPSHOT_PROOF_H

#include <string>
#include <vector>

#include "background/snapshot_engine.h"

namespace background {

// Returns the name of a file that is not in both folders, or not with the same bytes in both; empty when
// there is none. The log and the recorder's list of the job JOB do not count, and of its SyncTeX file what is
// compressed in it counts.
std::string different_file(const std::string &one, const std::string &other, const std::string &job);

// Finds what the run BARE says, logs and lists for the preamble, which SNAP, the same run with the snapshot
// in the folder FORMAT, does not. False when the two differ in anything else than one piece each. The memory
// that the log counts at its end does not count.
bool find_texts(const Workshop &shop, const EngineRun &bare, const EngineRun &snap, const std::string &format,
                toolhost::SnapshotTexts *texts);

// Returns the names of the files in the SyncTeX file of RUN, the document first. Empty when there is no whole
// one.
std::vector<std::string> files_of_links(const Workshop &shop, const EngineRun &run);
// Finds which files the preamble opens by the SyncTeX files of the run BARE and of SNAP, the same run with
// the snapshot, and completes the one of SNAP. DUMP is the recorder's list of the dump: it must have read the
// same files in the same order as BARE, since boxes hold their numbers. False when the runs do not go
// together.
bool find_links(const Workshop &shop, const EngineRun &bare, const EngineRun &snap, const std::string &dump,
                toolhost::SnapshotTexts *texts);

} // namespace background

#endif
