#include "helpers/editor.h"

#include <algorithm>

#include "common/path_forms.h"
#include "helpers/launch.h"
#include "helpers/terminal.h"

namespace helpers {

namespace {

// Returns the program of an editor: its own path, or the program of its desktop entry. Empty when there is
// none.
std::string editor_program(const common::Application &editor, const common::EditorRow &row) {
    if (editor.kind != common::Kind::entry)
        return editor.path;
    const std::vector<std::string> words = common::entry_command(editor.entry, "");
    const std::string first = words.empty() ? "" : words[0];
    const std::string leaf = common::leaf_of(first);
    if (std::find(row.programs.begin(), row.programs.end(), leaf) != row.programs.end() &&
        !program_path(first).empty())
        return program_path(first);
    for (const std::string &program : row.programs)
        if (const std::string path = program_path(program); !path.empty())
            return path;
    return "";
}

// Returns an argument of the table with %f, %l and %% filled in. Other codes stay.
std::string filled(std::string argument, const std::string &file, long line) {
    std::string text;
    for (std::size_t i = 0; i < argument.size(); i++) {
        const bool code = argument[i] == '%' && i + 1 < argument.size();
        if (code && argument[i + 1] == 'f')
            text += file;
        else if (code && argument[i + 1] == 'l')
            text += std::to_string(line);
        else if (code && argument[i + 1] == '%')
            text += '%';
        else {
            text += argument[i];
            continue;
        }
        i++;
    }
    return text;
}

} // namespace

std::vector<std::string> editor_command(const common::Application &editor, const common::EditorRow &row,
                                        const std::string &file, long line, std::string &problem) {
    std::vector<std::string> words = {editor_program(editor, row)};
    if (words[0].empty()) {
        problem = "I can't find the program of the editor " + editor.path;
        return {};
    }
    for (const std::string &argument : line > 0 ? row.at_line : row.plain)
        words.push_back(filled(argument, file, line));
    if (!row.terminal)
        return words;
    words = in_terminal(words);
    if (words.empty())
        problem = "there is no terminal for the editor " + editor.path +
                  "; set TERMINAL, or choose an editor with a window of its own";
    return words;
}

} // namespace helpers
