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
#include "helpers/viewer.h"

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

// True when the document is opened because a run has ended, and not because the person asked for it.
bool after_run() {
    return std::getenv("QUILLON_AFTER_RUN") != nullptr;
}

// True when the command `edit` follows for DOCUMENT, which will open it at a line. The shell says so; without
// a word from it, this is so for a file in which the engine stopped and an application that the shell takes
// for an editor with lines.
bool line_follows(const common::Application &application, const std::string &document) {
    if (!said_to_follow().empty())
        return said_to_follow() == "line";
    const std::string file = common::setting("FILENAME");
    if (file.empty() || common::expand_setting_path(file, "", common::space_byte()) != document)
        return false;
    const bool named = application.path.find("BBEdit") != std::string::npos &&
                       application.path.find("Lite") == std::string::npos;
    return named || editor_row(application);
}

// How long to wait for `edit`, in milliseconds: for one that the shell has said, and for one that is guessed.
int patience() {
    return said_to_follow().empty() ? 1000 : 10000;
}

// Shows the document in a viewer, and says why it does not show the place that the person wants to see.
bool show(const common::Application &application, const std::string &document, std::string &problem) {
    Showing showing;
    showing.asked = !after_run();
    showing.place = place_wish();
    // The bundle dviview only stands for a viewer. What keeps that from starting is said here, where it is
    // heard.
    const bool dvi = application.kind == common::Kind::bundle &&
                     common::signature_of_bundle(application.path) == dviview_signature;
    const bool shown =
        dvi ? show_dvi(document, showing, problem) : show_document(application, document, showing, problem);
    if (shown && !showing.remark.empty())
        std::puts(showing.remark.c_str());
    return shown;
}

bool open_now(const common::Application &application, const std::string &document, std::string &problem) {
    const common::EditorRow *const row = document.empty() ? nullptr : editor_row(application);
    if (document.empty())
        return open_application(application, document, problem);
    if (!row)
        return show(application, document, problem);
    return open_in_editor(application, *row, document, 0, problem);
}

// Leaves DOCUMENT to the command that follows, and opens it when that does not come. False when neither can
// be done.
bool leave_to_edit(const common::Application &application, const std::string &document) {
    const WaitingPlace place = wait_for(document);
    if (place.socket < 0)
        return false;
    const auto open_if_left = [&] {
        std::string problem;
        if (!is_taken_over(place, patience()))
            open_now(application, document, problem);
    };
    return work_detached(open_if_left, place.socket) == 0;
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
    std::string problem;
    if (application.kind == common::Kind::bundle && !document.empty() &&
        common::signature_of_bundle(application.path) == dviview_signature)
        return show(application, document, problem) ? 0 : fail(problem);
    // The document starts the application, or is sent to the one that runs.
    if (said_to_follow() == "document")
        return 0;
    if (!document.empty() && line_follows(application, document) && leave_to_edit(application, document))
        return 0;
    return open_now(application, document, problem) ? 0 : fail(problem);
}
