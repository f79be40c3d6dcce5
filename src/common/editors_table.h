// The editors table: which programs are editors, and how each is sent to a line.
//
// A text file, one row an editor: "programs | desktop ids | arguments at a line | arguments without one |
// flags", where %f is the file and %l the line. It leans on nothing of the shell, since the helpers use it
// too.
#ifndef QUILLON_COMMON_EDITORS_TABLE_H
#define QUILLON_COMMON_EDITORS_TABLE_H

#include <string>
#include <string_view>
#include <vector>

namespace common {

struct EditorRow {
    std::vector<std::string> programs, desktop_ids;
    std::vector<std::string> at_line, plain; // arguments, with %f and %l
    bool terminal = false;
    bool x11_only = false;
};

// Lines that are no row (blank, "#", fewer than three fields) are passed over.
std::vector<EditorRow> ParseEditorRows(std::string_view text);
// The rows of the person's own table, then those of the bundle that this program is in; read when first asked
// for.
const std::vector<EditorRow> &EditorRows();
// The row of the program or desktop entry at PATH, by its name or by the name of what it links to; null when
// it is no editor of the table.
const EditorRow *FindEditorRow(const std::vector<EditorRow> &rows, const std::string &path);
// 1 when the program or desktop entry at PATH is an editor of the table.
int IsTableEditor(const char *posix_path);

} // namespace common

#endif
