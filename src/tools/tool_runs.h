// Runs of the companion programs from a script command.
#ifndef QUILLON_TOOLS_TOOL_RUNS_H
#define QUILLON_TOOLS_TOOL_RUNS_H

namespace quillon {

// Each runs mycommand in curr_dir with its tool.
void DoDvipsAppleScript();
void DoBibtexAppleScript();
void DoMakeindexAppleScript();
void DoMpostAppleScript();
void DoDvipdfmAppleScript();

} // namespace quillon

#endif
