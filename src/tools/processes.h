// Process utilities: finding, launching and quitting the applications that the shell works with.
#ifndef QUILLON_TOOLS_PROCESSES_H
#define QUILLON_TOOLS_PROCESSES_H

#include "toolbox/apple_events.h"
#include "toolbox/bounded.h"
#include "toolbox/processes.h"
#include "toolbox/windows.h"

namespace quillon {

extern OSType toolSig;   // signature of the tool that CallTool drives; the send idle procedure watches it
extern OSType theOSType; // signature found by the last DoMyLaunch
extern ProcessInfoRec thePInfo;
extern FSSpec launchFileSpec;
extern LaunchParamBlockRec myLaunchStuff;
extern AppParameters myHLEvent;
extern NMRec gNotifyRec;

// 0 failed, 1 already running, 2 newly launched. APP is a Unix path; PSN_OUT may be null.
int DoMyLaunch(const char *app, ProcessSerialNumber *psn_out, int bring_to_front);
int IsSigRunning(OSType signature, ProcessSerialNumber *psn_out);
// Asks the application to quit and waits until it has gone: procNotFound, or 0 when it has no signature.
int KillApp(const char *app);
void SendQuit(const char *app);
void TerminateApp(OSType signature);
int DoTransfer(const char *app);
void DoNotify();
void multi_event(const EventRecord *event);
// 1 when the shell is the front process; fills its name and its program's folder.
int GetApplName(BoundedBuffer &name, std::int16_t *volume, std::int32_t *folder);
void PrintOSType(OSType signature);
void StringToOSType(const char *text, OSType *signature);

// Idle procedures of sends: while waiting for a tool, and for quit requests and documents.
int myIdleToolProcSend(EventRecord *event, std::uint32_t *sleep);
int myIdleProcSend(EventRecord *event, std::uint32_t *sleep);
int myIdleProcRec(EventRecord *event, std::uint32_t *sleep);

} // namespace quillon

#endif
