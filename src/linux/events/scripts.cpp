// The component that runs script texts: it finds or launches the application and sends it the events.
#include "toolbox/scripts.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "common/bundle.h"
#include "linux/events/ae_data.h"
#include "linux/events/peers.h"
#include "linux/events/script_parser.h"
#include "toolbox/codes.h"
#include "toolbox/files.h"
#include "toolbox/processes.h"

namespace quillon {

namespace {

constexpr std::uint16_t own_events = 1u << updateEvt | 1u << activateEvt | 1u << osEvt;
constexpr std::size_t longest_named = 100; // bytes of an application's path that a message repeats

struct Component {
    ComponentInstance instance = 0; // 0 while it is not open
    OSASendProc send = nullptr;
    std::int32_t refcon = 0;
    ScriptFault fault; // of the last script
};

std::array<Component, 8> components;
ComponentInstance last_instance = 0;

// The shell's own events that came while a script waited for a reply.
std::vector<EventRecord> kept_events;

Component *find_component(ComponentInstance instance) {
    for (Component &component : components)
        if (instance != 0 && component.instance == instance)
            return &component;
    return nullptr;
}

OSErr send_event(const AppleEvent *event, AppleEvent *reply, std::int32_t mode, std::int16_t priority,
                 std::int32_t timeout, AEIdleProc idle, AEFilterProc filter, std::int32_t) {
    return AESend(event, reply, mode, priority, timeout, idle, filter);
}

// Keeps the shell's own events for its event loop. The wait ends when the person cancels or the shell is to
// end.
int keep_waiting(EventRecord *event, std::uint32_t *sleep) {
    if (event->what == nullEvent)
        *sleep = 15;
    else
        kept_events.push_back(*event);
    return LeaveRequested() || CancelRequested() || CheckEventQueueForUserCancel();
}

// Puts the events that were kept back into the queue, in the order in which they came.
void give_events_back() {
    EventRecord event;
    // Those of the same kinds that are in the queue came later.
    while (!kept_events.empty() && GetNextEvent(own_events, &event))
        kept_events.push_back(event);
    for (const EventRecord &kept : kept_events)
        PostEvent(kept.what, kept.message, kept.modifiers, kept.where);
    kept_events.clear();
}

struct Application {
    FSSpec location = {};
    bool is_bundle = false;
    OSType signature = 0; // of a bundle; 0 where it has none
};

// Finds the bundle or the program at an HFS path, which begins with a volume.
bool find_application(const std::string &path, Application *application) {
    int is_folder = 0, was_alias = 0;
    static FSRef reference;
    FSSpec *const location = &application->location;
    if (path.find(':') == std::string::npos || path.front() == ':' ||
        FSMakeFSSpec(0, 0, path.c_str(), location) != noErr || FSpMakeFSRef(location, &reference) != noErr)
        return false;
    application->is_bundle = common::is_bundle_path(reference.path);
    application->signature = application->is_bundle ? signature_of(reference.path) : 0;
    // A plain program may do different things under different names, so a link to one stays.
    return !application->is_bundle || ResolveAliasFile(location, 1, &is_folder, &was_alias) == noErr;
}

// Sets PSN to the process of the application. A program is told by its path, and a bundle by its signature
// too, as everywhere in the shell.
bool find_process(const Application &application, ProcessSerialNumber *psn) {
    *psn = kNoProcess;
    while (GetNextProcess(psn) == noErr && !(application.is_bundle && IsPlainProcess(psn))) {
        ProcessInfoRec info = {60, nullptr, {}, 0, 0, nullptr};
        if (ProcessIsProgram(psn, &application.location) ||
            (application.signature && GetProcessInformation(psn, &info) == noErr &&
             info.processSignature == application.signature))
            return true;
    }
    return false;
}

bool launch(Application &application, ProcessSerialNumber *psn) {
    LaunchParamBlockRec block = {};
    block.launchBlockID = extendedBlock;
    block.launchEPBLength = extendedBlockLen;
    block.launchControlFlags = launchContinue | launchNoFileFlags | launchDontSwitch;
    block.launchAppSpec = &application.location;
    const OSErr error = LaunchApplication(&block);
    *psn = block.launchProcessSN;
    return error == noErr;
}

OSErr send_statement(const Component &component, const ScriptStatement &statement,
                     const ProcessSerialNumber &psn) {
    AEDesc target;
    AppleEvent event, reply;
    const bool selects = statement.kind == ScriptStatement::select_line;
    AECreateDesc(typeProcessSerialNumber, &psn, sizeof psn, &target);
    AECreateAppleEvent(four("misc"), selects ? four("slct") : four("actv"), &target, kAutoGenerateReturnID,
                       kAnyTransactionID, &event);
    if (selects)
        AEPutParamPtr(&event, keyDirectObject, typeLongInteger, &statement.line, sizeof statement.line);
    const OSErr error =
        component.send(&event, &reply, kAEWaitReply | kAECanInteract | kAECanSwitchLayer, kAEHighPriority,
                       kAEDefaultTimeout, keep_waiting, nullptr, component.refcon);
    give_events_back();
    AEDisposeDesc(&target);
    AEDisposeDesc(&event);
    AEDisposeDesc(&reply);
    return error;
}

// Says why a statement to the application at the HFS path PATH failed.
ScriptFault failure(OSStatus number, const std::string &path, const std::string &what) {
    return {number, "The application \"" + shortened_text(path, longest_named) + "\" " + what + "."};
}

ScriptFault run_statement(const Component &component, const std::string &path,
                          const ScriptStatement &statement) {
    Application application;
    ProcessSerialNumber psn;
    if (!find_application(path, &application))
        return failure(errAENoSuchObject, path, "cannot be found");
    if (!find_process(application, &psn)) {
        // A program that is no bundle takes no such event. One that was started a moment ago may not be
        // found, and must not be started twice because a line is to be shown in it.
        if (!application.is_bundle && statement.kind != ScriptStatement::activate)
            return failure(procNotFound, path, "does not run");
        if (!launch(application, &psn))
            return failure(procNotFound, path, "cannot be launched");
    }
    const OSErr error = send_statement(component, statement, psn);
    if (error != noErr)
        return failure(error, path, "gave the error " + std::to_string(error));
    return {};
}

ScriptFault run_script(const Component &component, std::string_view text) {
    std::vector<ScriptBlock> blocks;
    ScriptFault fault;
    if (!parse_script(text, blocks, fault))
        return fault;
    for (const ScriptBlock &block : blocks)
        for (const ScriptStatement &statement : block.statements)
            if (fault = run_statement(component, block.application, statement); fault.number != noErr)
                return fault;
    return fault;
}

} // namespace

ComponentInstance OpenDefaultComponent(OSType type, OSType subtype) {
    if (type != kOSAComponentType || subtype != kAppleScriptSubtype)
        return 0;
    for (Component &component : components)
        if (component.instance == 0) {
            component = {++last_instance, send_event, 0, {}};
            return component.instance;
        }
    return 0;
}

OSStatus CloseComponent(ComponentInstance instance) {
    Component *const component = find_component(instance);
    if (!component)
        return badComponentInstance;
    *component = {};
    return noErr;
}

OSStatus OSAGetSendProc(ComponentInstance instance, OSASendProc *procedure, std::int32_t *refcon) {
    const Component *const component = find_component(instance);
    if (!component)
        return badComponentInstance;
    *procedure = component->send;
    *refcon = component->refcon;
    return noErr;
}

OSStatus OSASetSendProc(ComponentInstance instance, OSASendProc procedure, std::int32_t refcon) {
    Component *const component = find_component(instance);
    if (!component)
        return badComponentInstance;
    component->send = procedure ? procedure : send_event;
    component->refcon = refcon;
    return noErr;
}

OSStatus OSACompileExecute(ComponentInstance instance, const AEDesc *source, OSAID context, std::int32_t,
                           OSAID *result) {
    *result = kOSANullScript;
    Component *component = find_component(instance);
    if (!component)
        return badComponentInstance;
    component->fault = {};
    if (context != kOSANullScript)
        return errOSAInvalidID;
    if (source->descriptorType != typeChar || !source->data)
        return errAECoercionFail;
    const std::vector<unsigned char> &bytes = source->data->bytes;
    // The component may be closed by what is handled while the script waits.
    const Component running = *component;
    const ScriptFault fault =
        run_script(running, {reinterpret_cast<const char *>(bytes.data()), bytes.size()});
    component = find_component(instance);
    if (component)
        component->fault = fault;
    return fault.number == noErr ? OSStatus{noErr} : OSStatus{errOSAScriptError};
}

OSStatus OSADispose(ComponentInstance instance, OSAID script) {
    if (!find_component(instance))
        return badComponentInstance;
    return script == kOSANullScript ? OSStatus{noErr} : OSStatus{errOSAInvalidID};
}

OSStatus OSAScriptError(ComponentInstance instance, OSType selector, OSType wanted, AEDesc *result) {
    const Component *const component = find_component(instance);
    if (!component)
        return badComponentInstance;
    if (selector == kOSAErrorNumber && wanted == typeShortInteger) {
        const std::int16_t number = static_cast<std::int16_t>(component->fault.number);
        return AECreateDesc(wanted, &number, sizeof number, result);
    }
    if (selector == kOSAErrorMessage && wanted == typeChar)
        return AECreateDesc(wanted, component->fault.message.data(), component->fault.message.size(), result);
    return selector == kOSAErrorNumber || selector == kOSAErrorMessage ? OSStatus{errAECoercionFail}
                                                                       : OSStatus{errOSABadSelector};
}

} // namespace quillon
