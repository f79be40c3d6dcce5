#include "helpers/editor.h"

#include <cstdlib>
#include <cstring>

#include "common/command_output.h"
#include "common/session_bus.h"
#include "helpers/launch.h"
#include "helpers/terminal.h"

namespace helpers {

// True when PROGRAM says that its version is FIRST or later. One that does not answer in two seconds is ended
// and counts as older.
static bool is_at_least(const std::string &program, int first) {
    const std::string said = common::output_of(program_path("timeout"), {"2", program, "--version"});
    const std::size_t digits = said.find_first_of("0123456789");
    return digits != std::string::npos && std::atoi(said.c_str() + digits) >= first;
}

std::vector<std::string> editor_command(const common::Application &editor, const common::EditorRow &row,
                                        const std::string &file, long line, std::string &problem) {
    std::vector<std::string> words = {program_of(editor, row.programs)};
    if (words[0].empty()) {
        problem = "I can't find the program of the editor " + editor.path;
        return {};
    }
    const bool at_line = line > 0 && (row.first_version == 0 || is_at_least(words[0], row.first_version));
    const char *const display = std::getenv("DISPLAY");
    for (std::string &argument :
         common::FilledArguments(at_line ? row.at_line : row.plain,
                                 {{'f', file}, {'l', std::to_string(line)}, {'x', display ? display : ""}}))
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
    common::leave_own_bus();
    Launch launch;
    launch.words = editor_command(editor, row, file, line, problem);
    if (launch.words.empty())
        return false;
    if (const int error = start_detached(launch); error != 0)
        problem = "I can't start " + launch.words[0] + ": " + std::strerror(error);
    return problem.empty();
}

} // namespace helpers
