#include "jobs/forward_search.h"

#include <cstdlib>

#include "settings/settings.h"
#include "state/job_state.h"
#include "toolbox/processes.h"
#include "tools/problems.h"
#include "viewers/viewers.h"

namespace quillon {

int has_shown_output() {
    return !mypdffile.empty() || !mydvifile.empty();
}

// 1 when the DVI file is to be shown: it is there, and no PDF file is, or the last run wrote a DVI file.
static int dvi_is_meant() {
    const char *const setting = get_str_resource("PDFTEXOUTPUT");
    const long last_output = setting ? std::atol(setting) : 0;
    return !mydvifile.empty() && (mypdffile.empty() || (last_output != 0 && last_output != 1));
}

static void note_first_problem() {
    open_hints.place_file = nullptr;
    open_hints.place_line = 0;
    for (int i = 0; i < problem_count() && open_hints.place_line == 0; i++) {
        open_hints.place_file = problem_at(i).file.data();
        open_hints.place_line = problem_at(i).line;
    }
}

void ShowInViewer() {
    note_first_problem();
    open_hints.shows_place = 1;
    if (dvi_is_meant())
        OpenDviFile(mydvifile.c_str());
    else
        ViewPdf();
    open_hints.shows_place = 0;
}

} // namespace quillon
