#include "tools/twin/toolbox_twin.h"

#include <cstdio>

#include "linux/events/ae_data.h"
#include "toolbox/codes.h"
#include "toolbox/pipes.h"
#include "toolbox/processes.h"

namespace quillon {

namespace test {

ToolboxTwin twin;

static void note(const std::string &call) {
    twin.calls.push_back(call);
}

OSErr own_send(const AppleEvent *, AppleEvent *, std::int32_t, std::int16_t, std::int32_t, AEIdleProc,
               AEFilterProc, std::int32_t) {
    note("own send");
    return noErr;
}

// The functions that the shell gets from the library.
static std::FILE *twin_popen(const char *command, const char *mode) {
    note(std::string("popen ") + command + " " + mode);
    return nullptr;
}

static int twin_chdir(const char *folder) {
    note(std::string("chdir ") + folder);
    return -1;
}

static int twin_pclose(std::FILE *) {
    note("pclose");
    return 0;
}

} // namespace test

using test::note;
using test::twin;

ComponentInstance OpenDefaultComponent(OSType type, OSType subtype) {
    note("open " + code_text(type) + " " + code_text(subtype));
    return twin.component;
}

OSStatus CloseComponent(ComponentInstance component) {
    note("close " + std::to_string(component));
    return twin.close_result;
}

OSStatus OSAGetSendProc(ComponentInstance component, OSASendProc *procedure, std::int32_t *refcon) {
    note("get " + std::to_string(component));
    if (twin.get_result == noErr) {
        *procedure = test::own_send;
        *refcon = 33;
    }
    return twin.get_result;
}

OSStatus OSASetSendProc(ComponentInstance component, OSASendProc procedure, std::int32_t refcon) {
    note("set " + std::to_string(component) + " " + std::to_string(refcon));
    twin.installed = procedure;
    return twin.set_result;
}

OSStatus OSACompileExecute(ComponentInstance component, const AEDesc *source, OSAID context,
                           std::int32_t mode, OSAID *result) {
    const std::string text(source->data->bytes.begin(), source->data->bytes.end());
    note("run " + std::to_string(component) + " " + code_text(source->descriptorType) + " <" + text + "> " +
         std::to_string(context) + " " + std::to_string(mode));
    *result = twin.script_result;
    return twin.run_result;
}

OSStatus OSADispose(ComponentInstance component, OSAID script) {
    note("dispose " + std::to_string(component) + " " + std::to_string(script));
    return noErr;
}

OSStatus OSAScriptError(ComponentInstance component, OSType selector, OSType wanted, AEDesc *result) {
    note("error " + std::to_string(component) + " " + code_text(selector) + " " + code_text(wanted));
    return selector == kOSAErrorNumber
               ? AECreateDesc(wanted, &twin.error_number, sizeof twin.error_number, result)
               : AECreateDesc(wanted, twin.error_message.data(), twin.error_message.size(), result);
}

OSErr AESend(const AppleEvent *event, AppleEvent *reply, std::int32_t mode, std::int16_t priority,
             std::int32_t timeout, AEIdleProc idle, AEFilterProc filter) {
    note("send");
    twin.event = event;
    twin.reply = reply;
    twin.mode = mode;
    twin.priority = priority;
    twin.timeout = timeout;
    twin.idle = idle;
    twin.filter = filter;
    return twin.send_result;
}

int document_follows = 0;

int SystemFrameworkLoad() {
    return twin.library;
}

void *SystemFunction(const char *name) {
    const std::string wanted = name;
    note(wanted);
    if (wanted == "popen")
        return reinterpret_cast<void *>(test::twin_popen);
    if (wanted == "chdir")
        return reinterpret_cast<void *>(test::twin_chdir);
    if (wanted == "pclose")
        return reinterpret_cast<void *>(test::twin_pclose);
    // The others are only looked at, never called.
    return &twin.calls;
}

} // namespace quillon
