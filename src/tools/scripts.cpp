#include "tools/scripts.h"

#include <cstring>

#include "console/output.h"
#include "files/paths.h"
#include "tools/processes.h"

namespace quillon {

ComponentInstance gScriptingComponent = 0;
OSASendProc oldSendProc = nullptr;
std::int32_t refCon = 0;
OSASendProc gMySendProc = nullptr;
BoundedString<2304> cmd;

// Kept on purpose: a component that is open already is not closed.
OSStatus InitCScript() {
    gScriptingComponent = OpenDefaultComponent(kOSAComponentType, kAppleScriptSubtype);
    if (!gScriptingComponent)
        return -1;
    OSStatus error = OSAGetSendProc(gScriptingComponent, &oldSendProc, &refCon);
    if (error == noErr) {
        gMySendProc = MySendProc;
        error = OSASetSendProc(gScriptingComponent, gMySendProc, 0);
    }
    // Kept on purpose: the component that is closed here stays in gScriptingComponent.
    if (error != noErr)
        CloseComponent(gScriptingComponent);
    return error;
}

OSStatus CScript(const char *text) {
    AEDesc source;
    OSAID result = kOSANullScript;
    if (!gScriptingComponent)
        if (const OSStatus error = InitCScript(); error != noErr)
            return error;
    if (const OSErr error = AECreateDesc(typeChar, text, std::strlen(text), &source); error != noErr)
        return error;
    const OSStatus error =
        OSACompileExecute(gScriptingComponent, &source, kOSANullScript, kOSAModeNull, &result);
    if (error == noErr)
        OSADispose(gScriptingComponent, result);
    AEDisposeDesc(&source);
    return error;
}

OSStatus DisposeCScript() {
    OSStatus result = noErr;
    if (gScriptingComponent)
        result = CloseComponent(gScriptingComponent);
    gScriptingComponent = 0;
    gMySendProc = nullptr;
    return result;
}

void GetScriptErrorInfo() {
    AEDesc number, message;
    std::int16_t code = 0;
    char text[256] = {};
    if (OSAScriptError(gScriptingComponent, kOSAErrorNumber, typeShortInteger, &number) == noErr)
        AEGetDescData(&number, &code, sizeof code);
    if (OSAScriptError(gScriptingComponent, kOSAErrorMessage, typeChar, &message) == noErr)
        AEGetDescData(&message, text, sizeof text - 1);
    AEDisposeDesc(&number);
    AEDisposeDesc(&message);
    ml_printf("Error code = %d\nError Message: %s\n", code, text);
}

std::int32_t script_send_mode(OSType event_id, std::int32_t mode) {
    return event_id == four("getd") || event_id == four("gdte") ? mode : mode & ~kAEDontRecord;
}

// Kept on purpose: the component's own send procedure, oldSendProc, is never called.
OSErr MySendProc(const AppleEvent *event, AppleEvent *reply, std::int32_t mode, std::int16_t priority,
                 std::int32_t timeout, AEIdleProc idle, AEFilterProc filter, std::int32_t) {
    AppleEvent copy;
    OSType event_id = 0;
    AEDuplicateDesc(event, &copy);
    if (AEGetAttributePtr(&copy, keyEventIDAttr, typeType, &event_id, sizeof event_id) != noErr)
        event_id = four("????");
    AEDisposeDesc(&copy);
    return AESend(event, reply, script_send_mode(event_id, mode), priority, timeout, idle, filter);
}

int script_path(const char *app, BoundedBuffer &out) {
    BoundedString<1024> hfs_path;
    out.clear();
    if (!convert_path(app, hfs_path))
        return 0;
    for (const char *p = hfs_path.c_str(); *p; p++)
        if (((*p == '"' || *p == '\\') && !out.append("\\")) || !out.append({p, 1}))
            return 0;
    return 1;
}

int callScript2alt(const char *app) {
    BoundedString<2048> path;
    const int fits = script_path(app, path);
    if (InitCScript() != noErr)
        return 0;
    if (fits && cmd.format("tell application \"%s\"\r\t\t\t\tactivate\r\t\t\t\tend tell\r", path.c_str()))
        CScript(cmd.c_str());
    DisposeCScript();
    return 0; // Kept on purpose: whatever became of the script.
}

int SendAppleScript(const char *app, const char *text, const char *folder) {
    ProcessSerialNumber psn;
    AEDesc target;
    AppleEvent event, reply;
    FSSpec location = {};
    if (!DoMyLaunch(app, &psn, 1) ||
        AECreateDesc(typeProcessSerialNumber, &psn, sizeof psn, &target) != noErr)
        return 0;
    AECreateAppleEvent(four("QUIL"), four("exec"), &target, kAutoGenerateReturnID, kAnyTransactionID, &event);
    AEDisposeDesc(&target);
    AEPutParamPtr(&event, keyDirectObject, typeChar, text, std::strlen(text));
    // A folder that is missing goes as an empty location, so that the receiver does not run the command
    // elsewhere.
    UnixToFSS(folder, nullptr, &location);
    AEPutParamPtr(&event, four("dest"), typeFSS, &location, sizeof location);
    AESend(&event, &reply, kAEQueueReply, kAEHighPriority, kAEDefaultTimeout, nullptr);
    AEDisposeDesc(&event);
    AEDisposeDesc(&reply);
    return 1;
}

} // namespace quillon
