#include "jobs/after_run.h"

#include <cstdio>
#include <cstdlib>

#include "console/output.h"
#include "files/paths.h"
#include "files/signatures.h"
#include "files/streams.h"
#include "settings/settings.h"
#include "state/cursors.h"
#include "state/job_scope.h"
#include "state/job_state.h"
#include "toolbox/processes.h"
#include "viewers/editor.h"
#include "viewers/viewers.h"

namespace quillon {

std::int32_t output_is_pdf = 0;

void SetViewFile() {
    current_outputfile.clear();
    int kind = 0;
    const char *const setting = get_str_resource("PDFTEXOUTPUT");
    output_is_pdf = setting && std::sscanf(setting, "%d", &kind) == 1 ? kind : 0;
    if (output_is_pdf == 0)
        return;
    const char *const file = get_str_resource(output_is_pdf == 1 ? "PDFFILE" : "DVIFILE");
    // The name is copied first because access may read another setting into the same buffer.
    if (!file || !current_outputfile.copy(file))
        return;
    if (access(current_outputfile.c_str(), 4) != 0) {
        current_outputfile.clear();
        return;
    }
    open_hints.after_run = 1;
    if (has_extension(current_outputfile.c_str(), ".dvi"))
        AutoViewDviFile();
    if (has_extension(current_outputfile.c_str(), ".pdf"))
        AutoViewPDFFile();
    open_hints.after_run = 0;
}

void AutoViewPDFFile() {
    if (current_outputfile.empty() || !find_application(&pdfview, "PDFVIEW", "Find a pdf viewer"))
        return;
    if (haveosx) {
        OpenDocInOSX(pdfview, current_outputfile.c_str());
        return;
    }
    if (!LaunchAndSendODOC(pdfview, current_outputfile.c_str(), 1))
        ml_printf("An error occurred trying to open pdf file.\n");
}

static void write_error_line() {
    BoundedString<1024> hfs_path, posix_path;
    GetTmpSrcFile(hfs_path);
    MacFileToPosixFile(hfs_path.c_str(), posix_path);
    std::FILE *const file = std::fopen(posix_path.c_str(), "w");
    if (!file)
        return;
    std::fprintf(file, "%ld\n", static_cast<long>(editlinenumber));
    std::fclose(file);
}

static void say_where() {
    ml_printf("\nUse any text editor to edit %s\n", editfile.c_str());
    ml_printf("at line number %ld.\n", static_cast<long>(editlinenumber));
}

// 0 when the file's path does not fit; it is then named.
static int take_error_place() {
    char *const file = myget_string("FILENAME");
    const int fits = !file || editfile.copy(file);
    if (!fits)
        ml_printf("The path \"%s\" is too long for Quillon.\n", file);
    std::free(file);
    const char *const line = get_str_resource("LINENUMBER");
    if (line) {
        editlinenumber = static_cast<std::int32_t>(std::atol(line));
        write_error_line();
    }
    return fits;
}

void CallTheEditor() {
    if (calleditor != 1)
        return;
    const int fits = take_error_place();
    calleditor = 0;
    if (fits)
        OpenEditorAtPlace();
}

void OpenEditorAtPlace() {
    if (!IsApp(editor)) {
        if (!find_application(&editor, "Editor", "Find the text editor")) {
            say_where();
            return;
        }
        ed_creator = get_editor_info(editor ? editor : "");
    }
    ml_printf("editfile = %s\n", editfile.c_str());
    if (haveosx) {
        open_hints.line_follows = LineCommandFollows();
        OpenDocInOSX(editor, editfile.c_str());
        open_hints.line_follows = 0;
        SetLineInEditorOSX(editfile.c_str(), editlinenumber);
        return;
    }
    if (!OpenEditor(editlinenumber)) {
        ml_printf("An error has occurred while sending an Apple Event to the editor.\n");
        say_where();
    }
}

static void after_run() {
    restore();
    set_str_resource("TEXDIR", curr_dir.c_str());
    if (tex_error == 0 && doView == 1 && job_views)
        SetViewFile();
    if (job_edits)
        CallTheEditor();
    else
        calleditor = 0;
}

void doAfterTeX() {
    after_run();
}

void doAfterPdfTeX() {
    after_run();
}

} // namespace quillon
