// A run with a snapshot: what the engine does not say, log and list of the preamble is put where it belongs.
#ifndef QUILLON_TOOLHOST_SNAPSHOT_USE_H
#define QUILLON_TOOLHOST_SNAPSHOT_USE_H

#include <string>
#include <string_view>

#include "toolhost/snapshots.h"

namespace toolhost {

// The output of an engine that was offered a snapshot. What stands between the lines of its start is replaced
// by what the preamble has to say. Until these lines have come, a few KiB at most are held back.
class SnapshotOutput {
  public:
    // Begins to look for the lines. TEXTS must outlive the look.
    void begin(const SnapshotTexts &texts) { texts_ = &texts; }
    bool looks() const { return texts_ != nullptr; }
    // Takes the next bytes of the output and returns those to pass on.
    std::string take(std::string_view bytes);
    // Ends the look and returns what was held back.
    std::string finish();

  private:
    const SnapshotTexts *texts_ = nullptr;
    std::string held_;
};

// Completes the log at PATH: the lines of the snapshot's start become the preamble's, and its first line
// names the format. False, with the file as it was, when the log is none of a run with a snapshot, or cannot
// be written.
bool complete_log(const std::string &path, const SnapshotTexts &texts);
// Completes the recorder's list at PATH: it names the original format and what the preamble reads. False,
// with the file as it was, when the engine has not read SNAPSHOT, or the list cannot be written.
bool complete_list(const std::string &path, const Snapshot &snapshot, const SnapshotTexts &texts);

} // namespace toolhost

#endif
