// The editors table: which programs are editors, and how each is sent to a line.
//
// A row is "programs | desktop ids | arguments at a line | arguments without one | flags". In the arguments
// %f is the file, %l the line and %x the X display. The flags are "terminal", "x11" and "from=VERSION".
#ifndef QUILLON_COMMON_EDITORS_TABLE_H
#define QUILLON_COMMON_EDITORS_TABLE_H

#include "common/application_table.h"

namespace common {

struct EditorRow : ApplicationNames {
    Words at_line, plain;  // arguments, with their codes
    bool terminal = false; // the editor runs in a terminal
    bool x11_only = false; // the row holds only where the display is X11
    int first_version = 0; // the first major version of the editor that can be sent to a line; 0: any
};

// Returns the rows of TEXT. One with fewer than three fields gives no row; missing arguments without a line
// are "%f", and arguments in which the file has no place get it as their last.
std::vector<EditorRow> ParseEditorRows(std::string_view text);
// Returns the rows of the person's own table (editors.table in the support folder), then those of the table
// in the shell's bundle. Both files are read at the first call.
const std::vector<EditorRow> &EditorRows();
// Returns the row for the program or desktop entry at the POSIX path PATH. Its own name is looked for first,
// then the name of the file that it links to. Null when no row of ROWS has either.
const EditorRow *FindEditorRow(const std::vector<EditorRow> &rows, const std::string &path);
// Returns 1 when EditorRows has a row for the program or desktop entry at that path, else 0.
int IsTableEditor(const char *posix_path);

} // namespace common

#endif
