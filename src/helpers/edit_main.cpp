// edit +LINE FILE: opens the file at that line in the editor of the settings. The name bbedit is a link to
// it.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>

#include "common/path_forms.h"
#include "common/places.h"
#include "common/preferences.h"
#include "helpers/application.h"
#include "helpers/editor.h"
#include "helpers/hand_over.h"
#include "helpers/source_place.h"

namespace {

using namespace helpers;

constexpr int exit_usage = 64;
constexpr std::size_t longest_line = 11; // "+" and the digits of the greatest number of 32 bits
const char *name = "edit";

int fail(const std::string &problem) {
    std::fprintf(stderr, "%s: %s\n", name, problem.c_str());
    return 1;
}

bool is_line(const char *text) {
    return text[0] == '+' && text[1] != '\0' &&
           std::strspn(text + 1, "0123456789") == std::strlen(text + 1) && std::strlen(text) <= longest_line;
}

// Returns PATH without the "." components that viewers hand on from an engine.
std::string without_dots(std::string path) {
    for (std::size_t dot; (dot = path.find("/./")) != std::string::npos;)
        path.erase(dot, 2);
    return path;
}

} // namespace

int main(int argc, char **argv) {
    const char *const slash = std::strrchr(argv[0], '/');
    name = slash ? slash + 1 : argv[0];
    if (argc != 3 || !is_line(argv[1])) {
        std::fprintf(stderr, "usage: %s +LINE FILE\n", name);
        return exit_usage;
    }
    const std::string file = without_dots(common::from_working_folder(argv[2]));
    if (access(file.c_str(), F_OK) != 0)
        return fail("I can't find the file " + file);
    const std::string setting = common::setting("Editor");
    if (setting.empty())
        return fail("no editor is chosen");
    const std::string path =
        common::expand_setting_path(setting, common::above_own_program(4), common::space_byte());
    const common::Application editor = find_application(path);
    if (editor.kind == common::Kind::none)
        return fail("I can't find the editor " + path);
    const common::EditorRow *const row = editor_row(editor);
    // Line 0 is no line of a file. The editor then opens the file where it likes.
    const long line = std::atol(argv[1] + 1);
    std::string problem;
    if (row && editor_command(editor, *row, file, line, problem).empty())
        return fail(problem);
    take_over(file);
    // An editor that the table does not know only gets the file.
    const bool opened =
        row ? open_in_editor(editor, *row, file, line, problem) : open_application(editor, file, problem);
    keep_edited_place(file, line);
    return opened ? 0 : fail(problem);
}
