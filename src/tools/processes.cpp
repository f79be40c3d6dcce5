#include "tools/processes.h"

#include <cstring>

#include "console/output.h"
#include "core/event_loop.h"
#include "files/paths.h"
#include "files/signatures.h"
#include "front/front.h"
#include "state/cursors.h"
#include "state/job_scope.h"
#include "state/job_state.h"
#include "toolbox/codes.h"
#include "toolbox/watching.h"
#include "viewers/viewers.h"

namespace quillon {

OSType toolSig = 0;
OSType theOSType = 0;
ProcessInfoRec thePInfo = {};
FSSpec launchFileSpec = {};
LaunchParamBlockRec myLaunchStuff = {};
AppParameters myHLEvent = {};
NMRec gNotifyRec = {};

static unsigned char process_name[64];
// The ticks that a tool has to end by itself once it is told to quit. A tool host takes two seconds at most
// to end a program that ignores signals.
static constexpr std::uint32_t quit_patience = 180;

// Looks for a process with SIGNATURE, and only for one that has not ended where ALIVE is 1. Returns 1 and its
// serial number, or 0.
static int scan(OSType signature, int alive, ProcessSerialNumber *psn) {
    *psn = kNoProcess;
    while (GetNextProcess(psn) == noErr && !IsPlainProcess(psn)) {
        thePInfo.processInfoLength = 60;
        thePInfo.processName = process_name;
        thePInfo.processAppSpec = nullptr;
        if (GetProcessInformation(psn, &thePInfo) == noErr && thePInfo.processSignature == signature &&
            !(alive && ProcessHasEnded(psn)))
            return 1;
    }
    return 0;
}

int IsSigRunning(OSType signature, ProcessSerialNumber *psn_out) {
    ProcessSerialNumber psn;
    if (!scan(signature, 0, &psn))
        return 0;
    if (psn_out)
        *psn_out = psn;
    return 1;
}

// Looks for a program by its location, because many plain programs share one signature.
static int scan_program(const FSSpec *spec, ProcessSerialNumber *psn) {
    *psn = kNoProcess;
    while (GetNextProcess(psn) == noErr)
        if (ProcessIsProgram(psn, spec) && !ProcessHasEnded(psn))
            return 1;
    return 0;
}

static int is_bundle(const char *app) {
    return has_extension(app, ".app");
}

// Finds the location of APP. Returns 0, after a message, when there is none.
static int locate(const char *app, FSSpec *spec) {
    BoundedString<1024> hfs_path;
    const int fits = convert_path(app, hfs_path) && hfs_path.append(":");
    if (!fits || FSMakeFSSpec(0, 0, hfs_path.c_str(), spec) != noErr) {
        ml_printf("Application not found: <%s>.\n", fits ? hfs_path.c_str() : app);
        return 0;
    }
    // A plain program may do different things under different names, so a link to one stays.
    int is_folder = 0, was_alias = 0;
    if (is_bundle(app))
        ResolveAliasFile(spec, 1, &is_folder, &was_alias);
    return 1;
}

// Returns 1 and the serial number when APP runs. One that has ended is no longer asked for anything, even
// while its last events wait.
static int running(const char *app, ProcessSerialNumber *psn) {
    if (is_bundle(app))
        return scan(theOSType, 1, psn);
    return UnixToFSS(app, nullptr, &launchFileSpec) && scan_program(&launchFileSpec, psn);
}

static OSErr launch(int bring_to_front) {
    myLaunchStuff.launchBlockID = extendedBlock;
    myLaunchStuff.launchEPBLength = extendedBlockLen;
    myLaunchStuff.launchFileFlags = 0;
    myLaunchStuff.launchControlFlags = static_cast<std::uint16_t>(launchContinue | launchNoFileFlags |
                                                                  (bring_to_front ? 0 : launchDontSwitch));
    myLaunchStuff.launchAppSpec = &launchFileSpec;
    myLaunchStuff.launchAppParameters = &myHLEvent;
    myHLEvent.theMsgEvent.what = kHighLevelEvent;
    myHLEvent.theMsgEvent.message = four("aevt");
    myHLEvent.theMsgEvent.when = TickCount();
    myHLEvent.theMsgEvent.where = {static_cast<std::int16_t>(four("oapp") >> 16),
                                   static_cast<std::int16_t>(four("oapp") & 0xFFFF)};
    myHLEvent.eventRefCon = 0;
    myHLEvent.messageLength = 0;
    const OSErr error = LaunchApplication(&myLaunchStuff);
    EventRecord seen;
    for (int i = 0; i < 3; i++)
        EventAvail(everyEvent, &seen);
    return error;
}

int DoMyLaunch(const char *app, ProcessSerialNumber *psn_out, int bring_to_front) {
    if (!get_sig(app, &theOSType))
        return 0;
    ProcessSerialNumber psn;
    if (running(app, &psn)) {
        if (psn_out)
            *psn_out = psn;
        if (bring_to_front)
            SetFrontProcess(&psn);
        return 1;
    }
    if (!locate(app, &launchFileSpec))
        return 0;
    const OSErr error = launch(bring_to_front);
    if (error == memFullErr || error == memFragErr) {
        ml_printf("Not enough memory to launch application.\n");
        return 0;
    }
    if (error != noErr) {
        ml_printf("Oops!!\n");
        return 0;
    }
    if (psn_out)
        *psn_out = myLaunchStuff.launchProcessSN;
    return 2;
}

// Sends a quit request to an address, which is a process serial number or a signature.
static void send_quit_request(OSType address_type, const void *address, std::size_t size) {
    AEDesc target;
    AppleEvent event, reply;
    if (AECreateDesc(address_type, address, size, &target) != noErr)
        return;
    if (AECreateAppleEvent(four("aevt"), four("quit"), &target, kAutoGenerateReturnID, kAnyTransactionID,
                           &event) == noErr)
        AESend(&event, &reply, kAENoReply, kAEHighPriority, kAEDefaultTimeout, myIdleProcSend);
    AEDisposeDesc(&target);
    AEDisposeDesc(&event);
    AEDisposeDesc(&reply);
}

void SendQuit(const char *app) {
    OSType signature = 0;
    ProcessSerialNumber psn;
    if (get_sig(app, &signature) && IsSigRunning(signature, &psn))
        send_quit_request(typeProcessSerialNumber, &psn, sizeof psn);
}

void TerminateApp(OSType signature) {
    send_quit_request(typeApplSignature, &signature, sizeof signature);
}

// Ends a tool that does not quit. It can no longer report that its run was cancelled, so that is said here.
static void end_tool(const ProcessSerialNumber *psn) {
    if (EndProcess(psn) != noErr || job_outcome != job_cancelled)
        return;
    exit_status = 1;
    ml_printf("\nProcessing cancelled by user.\n\n");
}

int KillApp(const char *app) {
    OSType signature = 0;
    ProcessSerialNumber psn;
    if (!get_sig(app, &signature))
        return 0;
    if (!IsSigRunning(signature, &psn))
        return procNotFound;
    SendQuit(app);
    std::uint32_t since = TickCount();
    while (IsSigRunning(signature, &psn)) {
        // A tool that does not go is ended when it has been waited for long enough, or the person has.
        if (CheckEventQueueForUserCancel() || TickCount() - since >= quit_patience) {
            end_tool(&psn);
            since = TickCount();
        }
        if (!main_event(everyEvent))
            front->tool_wait();
    }
    return procNotFound;
}

int DoTransfer(const char *app) {
    if (haveosx) {
        OpenDocInOSX(app, nullptr);
        return 1;
    }
    ProcessSerialNumber psn;
    return DoMyLaunch(app, &psn, 1) != 0;
}

void multi_event(const EventRecord *event) {
    if (event->message >> 24 != 1)
        return;
    if (!(event->message & resumeFlag)) {
        inBackground = 1;
        return;
    }
    inBackground = 0;
    restore();
    if (notifying) {
        NMRemove(&gNotifyRec);
        gNotifyRec.nmIcon = 0;
        notifying = 0;
    }
}

void DoNotify() {
    if (!inBackground || notifying)
        return;
    gNotifyRec = {8, 1, four("SICN"), -1, nullptr, 0};
    if (NMInstall(&gNotifyRec) == noErr)
        notifying = 1;
}

int GetApplName(BoundedBuffer &name, std::int16_t *volume, std::int32_t *folder) {
    ProcessSerialNumber self = {}, in_front = {};
    FSSpec program = {};
    GetCurrentProcess(&self);
    ProcessInfoRec own = {60, process_name, {}, 0, 0, &program};
    GetProcessInformation(&self, &own);
    from_pascal(process_name, name);
    *volume = program.vRefNum;
    *folder = program.parID;
    GetFrontProcess(&in_front);
    return SameProcess(&self, &in_front);
}

void PrintOSType(OSType signature) {
    ml_printf("Application signature = <%.4s>.\n", code_text(signature).c_str());
}

void StringToOSType(const char *text, OSType *signature) {
    unsigned char code[4] = {};
    std::memcpy(code, text, strnlen(text, sizeof code));
    *signature = code_of_bytes(code);
}

// During a wait the shell handles redraws, activation and suspend or resume, and nothing else.
static void handle_in_wait(EventRecord *event, std::uint32_t *sleep, std::uint32_t null_sleep) {
    if (event->what == nullEvent)
        *sleep = null_sleep;
    else if (event->what == updateEvt || event->what == activateEvt || event->what == osEvt)
        DoEvent(event);
}

int myIdleToolProcSend(EventRecord *event, std::uint32_t *sleep) {
    if (LeaveRequested() || CancelRequested() || (!inBackground && CheckEventQueueForUserCancel())) {
        job_outcome = job_cancelled;
        return 1;
    }
    if (SavedAtPrompt()) {
        ml_printf("\nThe document was saved, so the run that waits for an answer ends.\n");
        job_outcome = job_cancelled;
        return 1;
    }
    if (!IsSigRunning(toolSig, nullptr))
        return 1;
    handle_in_wait(event, sleep, 15);
    return 0;
}

int myIdleProcSend(EventRecord *event, std::uint32_t *sleep) {
    EventRecord key;
    // Kept on purpose: a key that does not cancel is dropped.
    if (GetNextEvent(keyDownMask, &key) && key.message == '.' && key.modifiers & cmdKey)
        return 1;
    handle_in_wait(event, sleep, 15);
    return 0;
}

int myIdleProcRec(EventRecord *event, std::uint32_t *sleep) {
    handle_in_wait(event, sleep, GetDblTime());
    return 0;
}

} // namespace quillon
