// The viewers table: how each viewer shows a document, is told a place in its source, and reads it again.
//
// A row is "programs | desktop ids | arguments | arguments at a source line | arguments for links | flags".
// In the arguments %d is the document, %u its URI, %f the source file, %l the line and %e the command that
// opens a source in the editor. A word that begins with "?" is given, without it, only where the document is
// shown because a run has ended. The flags are
//   single        a process shows one document, which it was started with, and reads it again by itself
//   usr1, hup     it reads the document again when it gets that signal
//   presents      when it is started once more its window comes forward
//   zathura       it is told a source line over the bus as zathura is
//   evince=NAME   it is told a source line over the bus as Evince is; its bus names begin with NAME
//
// A viewer that keeps the command for its reverse search in a settings file has a further field: "kde" or
// "toolkit" for the form of the file, its path below the folder of settings, the group, and KEY=VALUE for
// each line. In the values %e is the command, %q a double quote and %% a per cent sign.
#ifndef QUILLON_COMMON_VIEWERS_TABLE_H
#define QUILLON_COMMON_VIEWERS_TABLE_H

#include "common/application_table.h"

namespace common {

struct ViewerRow : ApplicationNames {
    Words show, at_source, links; // arguments
    bool single = false, presents = false, zathura = false;
    int reread_signal = 0; // 0 for none
    Words evince;          // the beginnings of bus names
    Words reverse;         // the further field; empty, or four words at least
};

// Returns the rows of TEXT. One with fewer than three fields gives no row.
std::vector<ViewerRow> ParseViewerRows(std::string_view text);
// Returns the rows of the person's own table (viewers.table in the support folder), then those of the table
// in the shell's bundle. Both files are read at the first call.
const std::vector<ViewerRow> &ViewerRows();
// Returns the row for the program or desktop entry at the POSIX path PATH. Its own name is looked for first,
// then the name of the file that it links to. Null when no row has either.
const ViewerRow *FindViewerRow(const std::string &path);

} // namespace common

#endif
