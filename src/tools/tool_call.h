// The tool command event: a command line and a working folder for a tool, and the reply with the run's
// outcome.
#ifndef QUILLON_TOOLS_TOOL_CALL_H
#define QUILLON_TOOLS_TOOL_CALL_H

#include "toolbox/apple_events.h"

namespace quillon {

extern unsigned char AppDone; // a reply arrived as an event of its own

// TOOL is the Unix path of a bundle, FOLDER a Unix path. 1 when the tool replied, 0 when not.
int CallTool(const char *tool, const char *command_line, const char *folder);
void ProcessReply(const AppleEvent *reply);
OSErr HandleReply(const AppleEvent *event, AppleEvent *reply, std::int32_t refcon);
OSErr HandleExit(const AppleEvent *event, AppleEvent *reply, std::int32_t refcon);

} // namespace quillon

#endif
