#include "helpers/editor.h"

#include <cstring>

#include "helpers/launch.h"
#include "helpers/terminal.h"

namespace helpers {

std::vector<std::string> editor_command(const common::Application &editor, const common::EditorRow &row,
                                        const std::string &file, long line, std::string &problem) {
    std::vector<std::string> words = {program_of(editor, row.programs)};
    if (words[0].empty()) {
        problem = "I can't find the program of the editor " + editor.path;
        return {};
    }
    for (std::string &argument : common::FilledArguments(line > 0 ? row.at_line : row.plain,
                                                         {{'f', file}, {'l', std::to_string(line)}}))
        words.push_back(std::move(argument));
    if (!row.terminal)
        return words;
    words = in_terminal(words);
    if (words.empty())
        problem = "there is no terminal for the editor " + editor.path +
                  "; set TERMINAL, or choose an editor with a window of its own";
    return words;
}

const common::EditorRow *editor_row(const common::Application &application) {
    return application.kind == common::Kind::bundle
               ? nullptr
               : common::FindEditorRow(common::EditorRows(), application.path);
}

bool open_in_editor(const common::Application &editor, const common::EditorRow &row, const std::string &file,
                    long line, std::string &problem) {
    Launch launch;
    launch.words = editor_command(editor, row, file, line, problem);
    if (launch.words.empty())
        return false;
    if (const int error = start_detached(launch); error != 0)
        problem = "I can't start " + launch.words[0] + ": " + std::strerror(error);
    return problem.empty();
}

} // namespace helpers
