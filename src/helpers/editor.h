// The command that opens a file in an editor of the editors table.
#ifndef QUILLON_HELPERS_EDITOR_H
#define QUILLON_HELPERS_EDITOR_H

#include <string>
#include <vector>

#include "common/editors_table.h"
#include "helpers/application.h"

namespace helpers {

// Returns the words of the command that opens FILE (an absolute POSIX path) at LINE, or at no line when it is
// 0. ROW is the editor's row in the table. The command of a terminal editor is that of the terminal. Empty,
// with a sentence about the reason in PROBLEM, when the editor's program or its terminal is missing.
std::vector<std::string> editor_command(const common::Application &editor, const common::EditorRow &row,
                                        const std::string &file, long line, std::string &problem);

// Returns the row of the editors table for an application; null when it is no editor of the table.
const common::EditorRow *editor_row(const common::Application &application);
// Opens FILE at LINE with that command. False, with a sentence about the reason in PROBLEM, when it cannot be
// started.
bool open_in_editor(const common::Application &editor, const common::EditorRow &row, const std::string &file,
                    long line, std::string &problem);

} // namespace helpers

#endif
