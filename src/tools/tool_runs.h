// These procedures run the programs that accompany TeX, from a command line that a script or another program
// sent.
#ifndef QUILLON_TOOLS_TOOL_RUNS_H
#define QUILLON_TOOLS_TOOL_RUNS_H

namespace quillon {

// Each runs the command line mycommand in the folder curr_dir (a Unix path) with the tool of its name, and
// waits for it. A tool that is missing is named in the console, and job_outcome is job_not_run.
void DoDvipsAppleScript();
void DoBibtexAppleScript();
void DoMakeindexAppleScript();
void DoMpostAppleScript();
void DoDvipdfmAppleScript();

} // namespace quillon

#endif
