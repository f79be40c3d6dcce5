// Where a preamble can be cut: the longest part of it that can be remembered.
#ifndef QUILLON_BACKGROUND_SNAPSHOT_CUT_H
#define QUILLON_BACKGROUND_SNAPSHOT_CUT_H

#include <string>
#include <vector>

#include "background/snapshot_engine.h"

namespace background {

// A part of a preamble that was dumped.
struct Dumped {
    bool good = false;
    bool ended_early = false;        // the work does not go on; nothing is known
    std::string reason;              // why it is not good
    std::size_t lines = 0;           // how many lines it has
    EngineRun run;                   // the last dump
    toolhost::SnapshotGround ground; // what it has read and looked for
};

// Returns why RUN, a dump, cannot be used; empty when it can. OPENS receives TeX code that opens the files
// again that it opened for writing.
std::string dump_problem(const Workshop &shop, const EngineRun &run, std::string *opens);

// Dumps the whole preamble, or where that cannot be remembered the longest part of it that is found by
// halving. WRITTEN are the files that a run of the document writes, relative to its folder: what reads one of
// them depends on the run before. The format of the result is in its output folder.
Dumped find_cut(const Workshop &shop, const toolhost::Preamble &preamble,
                const std::vector<std::string> &written);

// Returns the numbers of the lines before which PREAMBLE can be cut, each between two commands as far as its
// braces tell: 2 means behind the first line.
std::vector<std::size_t> cuts_of(const toolhost::Preamble &preamble);

} // namespace background

#endif
