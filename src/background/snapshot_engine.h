// Runs of an engine for snapshots, in a scratch folder.
#ifndef QUILLON_BACKGROUND_SNAPSHOT_ENGINE_H
#define QUILLON_BACKGROUND_SNAPSHOT_ENGINE_H

#include <functional>
#include <string>
#include <vector>

#include "toolhost/snapshots.h"

namespace background {

// What all the runs for one snapshot share. Paths are absolute POSIX paths.
struct Workshop {
    const toolhost::SnapshotCall &call;
    const toolhost::Variables &environment; // that of the call, as the host makes it
    std::string scratch;                    // a folder of our own
    std::string driver;                     // the TeX file that dumps
    std::vector<std::string> subfolders;    // of the document's folder, relative, into which it writes
    std::function<bool()> goes_on;          // false: no run is begun or waited for any more
    std::string format_copy;                // the folder of the unpacked copy of the format; empty for none
    std::size_t passed_files = 0;           // how many empty files a run with the dump opens at its start
};

struct EngineRun {
    bool ended = false;    // false: it was killed, or did not start
    bool too_long = false; // it was killed because it has worked too long, however busy the machine was
    int status = 0;        // its exit status
    std::string output;    // the folder that it wrote into
    std::string said;      // what it printed on standard output
    std::string errors;    // and on standard error
    std::string log, list; // its log and its recorder's list
};

// Typesets the document into a new folder, at one fixed date. FORMAT is the folder of the format that is
// offered before all others, empty for none. The folder is then renamed to NAME in the scratch folder.
EngineRun typeset(const Workshop &shop, const std::string &format, const std::string &name);

// Dumps the first LINES lines of the preamble, whose text is TEXT, at the first or the second of two fixed
// dates. OPENS is TeX code that opens files for writing again. The format is job.fmt in the output folder.
EngineRun dump(const Workshop &shop, const std::string &text, std::size_t lines, const std::string &opens,
               bool second_date);

} // namespace background

#endif
