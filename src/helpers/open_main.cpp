// open -a APPLICATION [DOCUMENT]: opens a document in an application. It returns as soon as the request is
// made.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>

#include "common/bundle.h"
#include "common/path_forms.h"
#include "common/preferences.h"
#include "helpers/application.h"
#include "helpers/dvi_viewer.h"
#include "helpers/editor.h"
#include "helpers/hand_over.h"
#include "helpers/launch.h"

namespace {

using namespace helpers;

constexpr int exit_usage = 64;

int fail(const std::string &problem) {
    std::fprintf(stderr, "open: %s\n", problem.c_str());
    return 1;
}

// What the shell says of the step after this one: "document" or "nothing". Empty when it says nothing.
std::string said_to_follow() {
    const char *const value = std::getenv("QUILLON_FOLLOWS");
    return value ? value : "";
}

// True when the engine stopped at an error in DOCUMENT. Then the command that goes to the line follows this
// one.
bool line_follows(const std::string &document) {
    if (!said_to_follow().empty())
        return false;
    const std::string file = common::setting("FILENAME");
    return !file.empty() && common::expand_setting_path(file, "", common::space_byte()) == document;
}

int open_in_editor(const common::Application &editor, const common::EditorRow &row,
                   const std::string &document) {
    std::string problem;
    Launch launch;
    launch.words = editor_command(editor, row, document, 0, problem);
    if (launch.words.empty())
        return fail(problem);
    const bool waits = line_follows(document) && !program_path(launch.words[0]).empty();
    const WaitingPlace place = waits ? wait_for(document) : WaitingPlace();
    if (place.socket >= 0) {
        launch.kept = place.socket;
        launch.before = [place] { return !is_taken_over(place); };
    }
    const int error = start_detached(launch);
    return error == 0 ? 0 : fail("I can't start " + launch.words[0] + ": " + std::strerror(error));
}

} // namespace

int main(int argc, char **argv) {
    if (argc < 3 || argc > 4 || std::strcmp(argv[1], "-a") != 0) {
        std::fputs("usage: open -a APPLICATION [DOCUMENT]\n", stderr);
        return exit_usage;
    }
    const common::Application application = find_application(argv[2]);
    if (application.kind == common::Kind::none)
        return fail(std::string("I can't find the application ") + argv[2]);
    std::string document;
    if (argc == 4) {
        document = common::from_working_folder(argv[3]);
        if (access(document.c_str(), F_OK) != 0)
            return fail("I can't find the file " + document);
    }
    // The bundle dviview only stands for a viewer. What keeps that from starting is said here, where it is
    // heard.
    if (application.kind == common::Kind::bundle && !document.empty() &&
        common::signature_of_bundle(application.path) == dviview_signature) {
        std::string problem;
        return show_dvi(document, problem) ? 0 : fail(problem);
    }
    // The document starts the application, or is sent to the one that runs.
    if (said_to_follow() == "document")
        return 0;
    const auto *const row = application.kind == common::Kind::bundle || document.empty()
                                ? nullptr
                                : common::FindEditorRow(common::EditorRows(), application.path);
    if (row)
        return open_in_editor(application, *row, document);
    std::string problem;
    return open_application(application, document, problem) ? 0 : fail(problem);
}
