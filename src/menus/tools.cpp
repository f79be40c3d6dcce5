#include "menus/tools.h"

#include <cstdlib>

#include "core/command_table.h"
#include "dialogs/dvips.h"
#include "files/choosers.h"
#include "kpath/search_paths.h"
#include "state/job_state.h"
#include "tools/processes.h"
#include "tools/tool_runs.h"
#include "viewers/viewers.h"

namespace quillon {

static void choose_bibtex() {
    BoundedString<256> aux;
    aux.copy(mybibfile.view());
    if (get_input_file(aux, ".aux", nullptr, 0, "Select an aux file"))
        RunBibTeX(aux.c_str());
}

static void choose_dvips() {
    BoundedString<256> dvi;
    BoundedString<512> stored;
    BoundedString<257> out, options;
    dvi.copy(mydvifile.view());
    stored_dvips_options(stored);
    // Options that one run cannot take are not proposed for it.
    options.copy(stored.view());
    if (GetDvipsOptions(dvi, out, options))
        RunFullDvips(dvi.c_str(), out.c_str(), options.c_str());
}

void DoTools(std::int16_t item) {
    switch (item) {
    case tool_bibtex:
        choose_bibtex();
        break;
    case tool_dvips:
        choose_dvips();
        break;
    case tool_makeindex:
        RunMakeIndex();
        break;
    case tool_mpost:
        RunMetaPost(1);
        break;
    case tool_build_mpost:
        RunMetaPost(3);
        break;
    case tool_ps2pdf:
        RunPs2pdf(2);
        break;
    case tool_dvipdfm:
        RunDvipdfm(mydvifile.c_str());
        break;
    default:
        break;
    }
}

void OpenConfigFile(std::int16_t item) {
    static const struct {
        std::int16_t item;
        const char *name;
        int kind;
    } files[] = {{config_dvips, "config.ps", 18},
                 {config_pdftex, "pdftexconfig.tex", 9},
                 {config_tex_cnf, "tex.cnf", 10},
                 {config_pdftex_cnf, "pdftex.cnf", 10}};
    for (const auto &file : files) {
        if (file.item != item)
            continue;
        char *const path = kpse_find_file(file.name, file.kind, 1);
        if (path && haveosx) {
            OpenDocInOSX(editor, path);
        } else if (path) {
            DoTransfer(editor);
            LaunchAndSendODOC(editor, path, 1);
        }
        std::free(path);
    }
}

} // namespace quillon
