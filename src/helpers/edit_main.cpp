// edit +LINE FILE: the chosen editor at that line. Also under the name bbedit.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>

#include "helpers/application.h"
#include "helpers/editor.h"
#include "helpers/hand_over.h"
#include "helpers/launch.h"
#include "places.h"

namespace {

using namespace helpers;

constexpr int exit_usage = 64;
const char *name = "edit";

int fail(const std::string &problem) {
    std::fprintf(stderr, "%s: %s\n", name, problem.c_str());
    return 1;
}

// The binaries folder, which "~" stands for in a setting.
std::string home_folder() {
    char path[4096];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    std::string folder(path, length > 0 ? static_cast<std::size_t>(length) : 0);
    for (int level = 0; level < 4; level++)
        folder.resize(std::min(folder.find_last_of('/'), folder.size()));
    return folder;
}

bool is_line(const char *text) {
    return text[0] == '+' && text[1] != '\0' &&
           std::strspn(text + 1, "0123456789") == std::strlen(text + 1) && std::strlen(text) < 11;
}

} // namespace

int main(int argc, char **argv) {
    const char *const slash = std::strrchr(argv[0], '/');
    name = slash ? slash + 1 : argv[0];
    if (argc != 3 || !is_line(argv[1])) {
        std::fprintf(stderr, "usage: %s +LINE FILE\n", name);
        return exit_usage;
    }
    char *const folder = get_current_dir_name();
    const std::string file = toolhost::absolute_path(folder ? folder : "/", argv[2]);
    std::free(folder);
    if (access(file.c_str(), F_OK) != 0)
        return fail("I can't find the file " + file);
    const std::string setting = toolhost::setting("Editor");
    if (setting.empty())
        return fail("no editor is chosen");
    const std::string path = toolhost::expand_setting_path(setting, home_folder(), toolhost::space_byte());
    const Application editor = find_application(path);
    if (editor.kind == Kind::none)
        return fail("I can't find the editor " + path);
    const quillon::EditorRow *const row = quillon::FindEditorRow(quillon::EditorRows(), editor.path);
    std::string problem;
    // An editor that the table does not know only gets the file.
    if (!row)
        return open_application(editor, file, problem) ? 0 : fail(problem);
    Launch launch;
    // Line 0 is no line of a file: the editor opens it where it likes.
    launch.words = editor_command(editor, *row, file, std::atol(argv[1] + 1), problem);
    if (launch.words.empty())
        return fail(problem);
    take_mark(file);
    const int error = start_detached(launch);
    return error == 0 ? 0 : fail("I can't start " + launch.words[0] + ": " + std::strerror(error));
}
