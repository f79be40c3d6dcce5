// The shell finds, launches and quits the applications that it works with. APP is always the Unix path of an
// application bundle or a program.
#ifndef QUILLON_TOOLS_PROCESSES_H
#define QUILLON_TOOLS_PROCESSES_H

#include "toolbox/apple_events.h"
#include "toolbox/bounded.h"
#include "toolbox/processes.h"
#include "toolbox/windows.h"

namespace quillon {

extern OSType toolSig;   // the signature of the tool that CallTool waits for
extern OSType theOSType; // the signature of the application that DoMyLaunch was last asked for
// Blocks that the system calls fill: the process, launch and notification records in use.
extern ProcessInfoRec thePInfo;
extern FSSpec launchFileSpec;
extern LaunchParamBlockRec myLaunchStuff;
extern AppParameters myHLEvent;
extern NMRec gNotifyRec;

// Launches APP, or finds it when it runs already, and brings it to the front when BRING_TO_FRONT is 1.
// Returns 0 on failure, 1 when it ran already, 2 when it was launched. PSN_OUT (may be null) receives the
// process serial number.
int DoMyLaunch(const char *app, ProcessSerialNumber *psn_out, int bring_to_front);
// Returns 1 when an application with SIGNATURE runs, else 0. PSN_OUT (may be null) then receives its serial
// number.
int IsSigRunning(OSType signature, ProcessSerialNumber *psn_out);
// Asks APP to quit and handles events until it no longer runs. One launched from here that takes longer than
// three seconds, or for which the person presses Escape, is ended with all that it runs; a cancelled run is
// then said to be one. Returns procNotFound (-600) then, or 0 at once when APP has no signature.
int KillApp(const char *app);
// Sends a quit request to APP when it runs, and does not wait.
void SendQuit(const char *app);
// Sends a quit request to the application with SIGNATURE, and does not wait.
void TerminateApp(OSType signature);
// Launches APP or brings it to the front. Returns 1; 0 when the launch failed on a system before haveosx.
int DoTransfer(const char *app);
// Asks for the person's attention when the shell is in the background. A second call does nothing until the
// shell has been in front.
void DoNotify();
// Handles an event that moves the shell to the background or to the front: sets inBackground, and in front
// shows the arrow and removes the notification.
void multi_event(const EventRecord *event);
// Writes the shell's own process name into NAME, and its program's volume and folder id into VOLUME and
// FOLDER. Returns 1 when the shell is the front process, else 0.
int GetApplName(BoundedBuffer &name, std::int16_t *volume, std::int32_t *folder);
// Prints a signature in the console.
void PrintOSType(OSType signature);
// Makes a signature of the first four bytes of TEXT; missing bytes are 0.
void StringToOSType(const char *text, OSType *signature);

// Idle procedures, which the system calls with each event while a sent event waits for its reply. They handle
// redraws, activation and suspend or resume, write the ticks until the next call into SLEEP, and return 1 to
// stop the wait. The first waits for a tool: it stops when the person cancels or the tool has gone.
int myIdleToolProcSend(EventRecord *event, std::uint32_t *sleep);
// Waits while a quit request or a document is sent: it stops at Command-period.
int myIdleProcSend(EventRecord *event, std::uint32_t *sleep);
// Waits for a reply and never stops.
int myIdleProcRec(EventRecord *event, std::uint32_t *sleep);

} // namespace quillon

#endif
