#include "tools/tool_runs.h"

#include "console/output.h"
#include "core/event_loop.h"
#include "files/signatures.h"
#include "state/cursors.h"
#include "state/job_scope.h"
#include "state/job_state.h"
#include "tools/processes.h"
#include "tools/tool_call.h"

namespace quillon {

// Runs mycommand in curr_dir with the bundle TOOL; messages call it NAME.
static void run_script(const char *tool, const char *name) {
    const JobScope scope;
    if (!IsApp(tool)) {
        job_outcome = job_not_run;
        ml_printf("I can't find %s. It should be in the binaries folder.\n", name);
        return;
    }
    KillApp(tool);
    while (main_event(mask_no_high_level))
        ;
    CallTool(tool, mycommand.c_str(), curr_dir.c_str());
    restore();
    KillApp(tool);
}

void DoDvipsAppleScript() {
    run_script(dvipsexe.c_str(), "dvips");
}

void DoBibtexAppleScript() {
    run_script(bibexe.c_str(), "bibtex");
}

void DoMakeindexAppleScript() {
    run_script(mkexe.c_str(), "makeindex");
}

void DoMpostAppleScript() {
    run_script(mpostexe.c_str(), "mpost");
}

void DoDvipdfmAppleScript() {
    run_script(dvipdfmexe.c_str(), "dvipdfm");
}

} // namespace quillon
