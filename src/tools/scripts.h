// The script runner: it runs AppleScript texts with the host's script component. And the sender of 'exec',
// the event by which one program has another run a command.
#ifndef QUILLON_TOOLS_SCRIPTS_H
#define QUILLON_TOOLS_SCRIPTS_H

#include "toolbox/apple_events.h"
#include "toolbox/bounded.h"
#include "toolbox/scripts.h"

namespace quillon {

extern ComponentInstance gScriptingComponent; // the open component; 0 when there is none
// The component's own send procedure with its number, as they were before InitCScript put MySendProc there.
extern OSASendProc oldSendProc;
extern std::int32_t refCon;
extern OSASendProc gMySendProc; // the send procedure that InitCScript installed; null when there is none
extern BoundedString<2304> cmd; // the text of the script that is run

// Opens the component into gScriptingComponent and installs MySendProc. Returns noErr; -1 when no component
// can be opened; or the component's error, after which it is closed and gScriptingComponent keeps its number.
OSStatus InitCScript();
// Compiles and runs the script TEXT, for which it opens the component when none is open; the component stays
// open. Returns noErr, or the error of InitCScript or of the component.
OSStatus CScript(const char *text);
// Closes the component and forgets its send procedure. Returns the result of the closing, noErr when no
// component was open.
OSStatus DisposeCScript();
// Prints the number and the message of the last script's error, at most 255 bytes of it. For a script that
// succeeded, and when no component is open, they are 0 and empty.
void GetScriptErrorInfo();

// The mode in which an event with EVENT_ID goes out that a script sends in MODE. It may be recorded, so
// kAEDontRecord is taken away, except for the two events by which a component asks an application for data.
std::int32_t script_send_mode(OSType event_id, std::int32_t mode);
// Sends an event of a script with AESend, in the mode that script_send_mode gives, and returns AESend's
// result. REFCON is not used.
OSErr MySendProc(const AppleEvent *event, AppleEvent *reply, std::int32_t mode, std::int16_t priority,
                 std::int32_t timeout, AEIdleProc idle, AEFilterProc filter, std::int32_t refcon);

// Writes the HFS path of the application at the Unix path APP into OUT, as it stands between the quotes of a
// script. Returns 1, or 0 when it does not fit.
int script_path(const char *app, BoundedBuffer &out);
// Activates the application at the Unix path APP by a script. Returns 0 always.
int callScript2alt(const char *app);
// Launches the application at the Unix path APP or brings it to the front, and sends it an 'exec' event with
// the command TEXT and the folder at the Unix path FOLDER. Returns 1 when the event was sent, whatever became
// of it, and 0 when the application could not be launched or addressed.
int SendAppleScript(const char *app, const char *text, const char *folder);

} // namespace quillon

#endif
