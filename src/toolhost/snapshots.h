// Preamble snapshots: what the tool host and the program in the background agree on.
//
// A snapshot is a format that the background program has dumped with the preamble of a document executed. It
// stands unpacked in a folder of its own, under the name of the format that the engine looks for, so that an
// engine is offered it as it is offered the copy of a format. A note beside it says what it rests on; as soon
// as one thing there is no longer so, the snapshot is not offered. A refusal is such a note too.
#ifndef QUILLON_TOOLHOST_SNAPSHOTS_H
#define QUILLON_TOOLHOST_SNAPSHOTS_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "toolhost/environment.h"
#include "toolhost/format_copies.h"

namespace toolhost {

// A run of an engine whose preamble can be remembered. Paths are absolute POSIX paths.
struct SnapshotCall {
    FormatSearch search;            // for the format that the run starts with
    std::vector<std::string> words; // the engine's words; the first is its name for itself
    std::string folder;             // where it runs
    std::string main;               // the document
    std::string job;                // the name of its files
};

// Fills CALL for the engine PROGRAM that is called with WORDS in FOLDER on the document MAIN. Returns what
// keeps the preamble of such a run from being remembered, empty when nothing does: only plain runs of pdfTeX
// with few options, whose document has a plain name and lies where the engine runs, can be.
std::string fill_call(const std::string &program, const std::vector<std::string> &words,
                      const std::string &folder, const std::string &main, SnapshotCall *call);

// The lines of a document, as the engine counts them.
struct Preamble {
    std::string text;               // the bytes before the line with \begin{document}
    std::vector<std::size_t> lines; // where each line of TEXT begins
};
// Reads the preamble of the document at MAIN. False when it has none, one that is longer than 256 KiB, or
// one that a note cannot hold.
bool read_preamble(const std::string &main, Preamble *preamble);

// Returns what of ENVIRONMENT an engine can see, as text. Variables of the session that no engine and no
// search path asks for are left out, unless they are among ASKED.
std::string seen_environment(const Variables &environment);

// Names that were looked for in a folder whose own stamp changes with every run.
struct LookedFor {
    std::string folder;
    std::vector<std::string> names; // without folders, folded, sorted, each once
};
// Returns NAME as it is compared with others: without regard to case, since a distribution may search so.
std::string folded(const std::string &name);
// Returns the entries of the folder that have one of the names, as one text.
std::string found_names(const LookedFor &looked);

// What a snapshot or a refusal rests on.
struct SnapshotGround {
    std::string preamble;
    std::vector<std::pair<std::string, std::string>> places; // files and folders, with their snapshot_stamp
    std::vector<std::pair<LookedFor, std::string>> names;    // with what found_names answered
};
// Returns what tells one state of the file or folder at PATH from another; "-" when nothing is there. Unlike
// stamp_of it also tells a file that was written and given its old time back.
std::string snapshot_stamp(const std::string &path);
bool still_holds(const SnapshotGround &ground);

// What the engine says, logs and lists of the preamble, and where it goes.
struct SnapshotTexts {
    std::string said;               // what the run without the snapshot printed for the preamble
    std::string logged;             // the same of the log
    std::string banner;             // the first line of the log up to the date
    bool said_joins = false;        // SAID goes on the line before
    bool logged_joins = false;      // LOGGED too
    std::size_t list_at = 0;        // the number of lines of the recorder's list before the preamble's
    std::vector<std::string> start; // the lines that the run with the snapshot has there instead
    std::vector<std::string> list;  // the preamble's lines
    // Of a run that writes a SyncTeX file (toolhost/source_links.h):
    std::size_t passed_files = 0;            // how many empty files the start opens; 0 without such a file
    std::vector<std::string> preamble_files; // the names of those that the preamble opens
};

enum class SnapshotState {
    unknown, // there is none, or one that no longer holds
    refused, // the preamble cannot be remembered
    ready
};
struct Snapshot {
    std::string folder;   // of the unpacked format
    std::string original; // the format that the engine reads without it
    std::string reason;   // why it was refused
    std::string preamble; // what it has executed
};
// Looks for the snapshot of CALL in ENVIRONMENT (as run_environment returns it), fills SNAPSHOT, and notes
// that it is used.
SnapshotState find_snapshot(const SnapshotCall &call, const Variables &environment, Snapshot *snapshot);
// Puts SNAPSHOT in front of the search path for formats.
void offer_snapshot(const Snapshot &snapshot, Variables &environment);
// Removes SNAPSHOT, so that the next run executes the preamble.
void forget_snapshot(const Snapshot &snapshot);
// Reads what goes with SNAPSHOT. False when it cannot be read.
bool read_texts(const Snapshot &snapshot, SnapshotTexts *texts);

// Starts the program in the background for CALL, an engine run of the bundle at BUNDLE.
void ask_for_snapshot(const std::string &bundle, const SnapshotCall &call);

// Returns the path of the note about CALL in ENVIRONMENT.
std::string snapshot_note(const SnapshotCall &call, const Variables &environment);
// Writes the note. A snapshot has NAME, the leaf of its folder, and ORIGINAL; a refusal has REASON. False
// when it cannot be written.
bool write_note(const SnapshotCall &call, const Variables &environment, const SnapshotGround &ground,
                const std::string &name, const std::string &original, const std::string &reason);
// Writes TEXTS into FOLDER. False when they cannot be written, or are too long to be read again.
bool write_texts(const std::string &folder, const SnapshotTexts &texts);

// The lines that stand around what a run with a snapshot does at its start.
inline constexpr const char *snapshot_begins = "quillon-snapshot begins\n";
inline constexpr const char *snapshot_ends = "quillon-snapshot ends\n";

} // namespace toolhost

#endif
