// The tool command event sends a tool a command line and a working folder. The tool's reply tells how the run
// ended.
#ifndef QUILLON_TOOLS_TOOL_CALL_H
#define QUILLON_TOOLS_TOOL_CALL_H

#include "toolbox/apple_events.h"
#include "toolbox/files.h"

namespace quillon {

extern unsigned char AppDone; // 1 once a reply has arrived as an event of its own

// Launches TOOL (the Unix path of a bundle), sends it COMMAND_LINE and FOLDER (a Unix path) and waits for the
// reply. Returns 1 when the tool replied, 0 when it cannot be found or launched or the wait was cancelled;
// job_outcome says which.
int CallTool(const char *tool, const char *command_line, const char *folder);
// 1 when the file location SPEC lies in the folder of the tools' transcripts, else 0. No other file that a
// tool names is shown and deleted.
int is_transcript(const FSSpec *spec);
// Takes a tool's reply: sets exit_status, shows the transcript in the console and deletes it, quits the tool,
// and sets tex_error, calleditor, the problems and the first error of the run.
void ProcessReply(const AppleEvent *reply);
// Handle a tool's report that comes as an event of its own, after a run and after a cancelled run. They set
// exit_status, calleditor and the problems, show the transcript, and return noErr; REPLY and REFCON are not
// used.
OSErr HandleReply(const AppleEvent *event, AppleEvent *reply, std::int32_t refcon);
OSErr HandleExit(const AppleEvent *event, AppleEvent *reply, std::int32_t refcon);

} // namespace quillon

#endif
