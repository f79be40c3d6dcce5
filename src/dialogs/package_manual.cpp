#include "dialogs/package_manual.h"

#include "console/output.h"
#include "dialogs/dialog.h"
#include "files/paths.h"
#include "files/signatures.h"
#include "state/job_state.h"
#include "tools/shell_commands.h"
#include "viewers/quoting.h"

namespace quillon {

static constexpr std::int16_t package_field = 3;

int accept_package(DialogRef window) {
    BoundedString<101> package;
    GetControlText(window, package_field, package);
    // A name that begins like an option would be one.
    return package.empty() || package.view().starts_with('-') ? refuse(window, package_field) : 1;
}

// Makes the assignment that has texdoc show a PDF file in the chosen viewer. Two shells read the viewer's
// path.
static int viewer_assignment(BoundedBuffer &assignment) {
    BoundedString<1024> path;
    BoundedString<2048> once;
    BoundedString<4096> command, twice;
    assignment.clear();
    if (!IsApp(pdfview))
        return 1;
    UnixFileToPosixFile(pdfview, path);
    return quote_path(path.c_str(), once) && command.format("open -a \"%s\"", once.c_str()) &&
           quote_path(command.c_str(), twice) && assignment.format("PDFVIEWER_texdoc=\"%s\" ", twice.c_str());
}

void show_package_manual() {
    BoundedString<101> package;
    BoundedString<512> quoted;
    BoundedString<4200> assignment;
    BoundedString<5000> command;
    const DialogRef window = open_dialog(dialog_package);
    SelectControlText(window, package_field);
    const int confirmed = run_dialog(window) && GetControlText(window, package_field, package);
    DisposeWindow(window);
    if (!confirmed)
        return;
    if (quote_path(package.c_str(), quoted) && viewer_assignment(assignment) &&
        command.format("%stexdoc \"%s\" 2>&1", assignment.c_str(), quoted.c_str()))
        InvokeTool(command.c_str(), nullptr);
}

} // namespace quillon
