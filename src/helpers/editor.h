// The command that opens a file in an editor of the editors table.
#ifndef QUILLON_HELPERS_EDITOR_H
#define QUILLON_HELPERS_EDITOR_H

#include <string>
#include <vector>

#include "common/editors_table.h"
#include "helpers/application.h"

namespace helpers {

// LINE 0: at no line. A terminal editor's command is that of the terminal. Empty, with what is wrong in
// PROBLEM, when the editor is not there or needs a terminal and there is none.
std::vector<std::string> editor_command(const Application &editor, const common::EditorRow &row,
                                        const std::string &file, long line, std::string &problem);

} // namespace helpers

#endif
