#include "jobs/builds.h"

#include <cstdlib>

#include "core/command_table.h"
#include "dialogs/command_line.h"
#include "jobs/after_run.h"
#include "jobs/tex_runs.h"
#include "menus/formats.h"
#include "settings/settings.h"
#include "state/cursors.h"
#include "state/job_scope.h"
#include "state/job_state.h"

namespace quillon {

// The proposed command lines, without and with e-TeX, for items 1 and 2.
using Proposals = const char *[2][2];

static constexpr Proposals pdf_proposals = {
    {"pdftex -ini -jobname=pdftex -progname=pdftex *pdftex.ini",
     "pdfetex -ini -jobname=pdfetex -progname=pdfetex *pdftex.ini"},
    {"pdftex -ini -jobname=pdflatex -progname=pdflatex *pdflatex.ini",
     "pdfetex -ini -jobname=pdfelatex -progname=pdfelatex *pdflatex.ini"},
};
static constexpr Proposals tex_proposals = {
    {"tex -ini -jobname=tex -progname=tex tex.ini", "etex -ini -jobname=etex -progname=etex *etex.ini"},
    {"tex -ini -jobname=latex -progname=latex latex.ini",
     "etex -ini -jobname=elatex -progname=elatex *elatex.ini"},
};

static void build(const Proposals &proposals, std::int16_t item) {
    const JobScope scope;
    if (!GetCommandLine(proposals[item - build_pdftex][useETeX == 1], curr_dir))
        return;
    DoAppleScript();
    restore();
    set_str_resource("TEXDIR", curr_dir.c_str());
    SetFormatMenu();
    SetDefaultFormat();
    CallTheEditor();
}

void DoPDFBuildItem(std::int16_t item) {
    if (item == build_execute)
        Execute();
    else if (item == build_pdftex || item == build_pdflatex)
        build(pdf_proposals, item);
}

void DoBuildItem(std::int16_t item) {
    if (item == build_pdftex || item == build_pdflatex)
        build(tex_proposals, item);
}

void Execute() {
    const JobScope scope;
    char *const line = myget_string("BUILDLINE");
    const int confirmed = GetCommandLine(line, curr_dir);
    std::free(line);
    if (!confirmed)
        return;
    set_str_resource("BUILDLINE", mycommand.c_str());
    set_str_resource("TEXDIR", curr_dir.c_str());
    DoAppleScript();
    CallTheEditor();
}

void PDFExecute() {
    const JobScope scope;
    if (GetCommandLine(nullptr, curr_dir))
        DoPdfTeXAppleScript();
}

} // namespace quillon
