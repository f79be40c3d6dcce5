// Sending events to applications on the bus, and documents and quit requests to plain programs.
#include <signal.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "common/path_forms.h"
#include "common/places.h"
#include "common/session_bus.h"
#include "front/front.h"
#include "linux/events/ae_codec.h"
#include "linux/events/ae_data.h"
#include "linux/events/ae_receive.h"
#include "linux/events/event_sources.h"
#include "linux/events/peers.h"
#include "linux/events/plain_programs.h"
#include "linux/events/process_table.h"
#include "toolbox/codes.h"
#include "toolbox/files.h"
#include "toolbox/processes.h"

namespace quillon {

// The state of a wait for a reply, which a callback of the bus completes.
struct Waiting {
    bool done = false;
    OSErr result = noErr;
    AppleEvent *reply = nullptr;
};

static OSErr error_code(const sd_bus_error *error) {
    if (sd_bus_error_has_name(error, SD_BUS_ERROR_TIMEOUT))
        return errAETimeout;
    for (const char *const refusal :
         {SD_BUS_ERROR_UNKNOWN_METHOD, SD_BUS_ERROR_UNKNOWN_OBJECT, SD_BUS_ERROR_UNKNOWN_INTERFACE})
        if (sd_bus_error_has_name(error, refusal))
            return errAEEventNotHandled;
    return connectionInvalid;
}

static int on_reply(sd_bus_message *message, void *context, sd_bus_error *) {
    Waiting *const waiting = static_cast<Waiting *>(context);
    waiting->done = true;
    WakeUp();
    if (sd_bus_message_is_method_error(message, nullptr)) {
        waiting->result = error_code(sd_bus_message_get_error(message));
        return 0;
    }
    ae_make_record(waiting->reply, four("aevt"), four("ansr"));
    std::int32_t error = 0;
    common::Parameters parameters;
    // A reply of another shape counts as one without parameters.
    if (sd_bus_message_read(message, "i", &error) >= 0 && common::read_parameters(message, parameters) >= 0)
        take_parameters(parameters, waiting->reply);
    waiting->result = static_cast<OSErr>(error);
    return 0;
}

// Serves events until DONE answers 1: noErr, errAEWaitCanceled when IDLE gives the wait up, or errAETimeout
// after TIMEOUT ticks.
template <typename Done> static OSErr wait_for(Done done, std::int32_t timeout, AEIdleProc idle) {
    const std::uint32_t start = TickCount();
    // Nobody would handle the shell's own events without an idle procedure, so they are left in the queue.
    const std::uint16_t own_events = idle ? 0x8140 : 0;
    std::uint32_t sleep = idle ? 0 : 15;
    while (!done()) {
        EventRecord event;
        // While a job's gate holds back the events that start work, other programs' events are taken here;
        // otherwise they stay in the queue for the event loop.
        const int others = EventsAreGated() ? highLevelEventMask : 0;
        WaitNextEvent(static_cast<std::uint16_t>(own_events | others), &event, sleep);
        // An event that was taken must be handled even when the wait is over.
        if (event.what == kHighLevelEvent) {
            AEProcessAppleEvent(&event);
            continue;
        }
        if (event.what == nullEvent) {
            if (done())
                return noErr;
            front->tool_wait();
        }
        if (idle && idle(&event, &sleep))
            return errAEWaitCanceled;
        if (timeout >= 0 && TickCount() - start >= static_cast<std::uint32_t>(timeout))
            return errAETimeout;
    }
    return noErr;
}

// Whether a message has reached a program.
struct Delivery {
    bool answered = false; // the bus has taken it, and has said so
    bool lost = false;     // there was nobody whom it could be given to
};

static int on_loss(sd_bus_message *message, void *context, sd_bus_error *) {
    const sd_bus_error *const error = sd_bus_message_get_error(message);
    if (sd_bus_error_has_name(error, SD_BUS_ERROR_SERVICE_UNKNOWN) ||
        sd_bus_error_has_name(error, SD_BUS_ERROR_NAME_HAS_NO_OWNER))
        static_cast<Delivery *>(context)->lost = true;
    return 0;
}

static int on_bus_answer(sd_bus_message *, void *context, sd_bus_error *) {
    static_cast<Delivery *>(context)->answered = true;
    WakeUp();
    return 0;
}

// Sends MESSAGE without waiting for the program's reply, but until it is known that the program has it. The
// bus answers in the order in which it is asked, so a message that nobody could be given has been refused
// when it answers what is asked behind it. Returns procNotFound for such a one.
static OSErr deliver(sd_bus *bus, sd_bus_message *message, std::int32_t timeout, AEIdleProc idle) {
    Delivery delivery;
    sd_bus_slot *message_slot = nullptr, *question_slot = nullptr;
    OSErr outcome = connectionInvalid;
    if (sd_bus_call_async(bus, &message_slot, message, on_loss, &delivery, UINT64_MAX) >= 0 &&
        sd_bus_call_method_async(bus, &question_slot, common::bus_name, common::bus_path,
                                 common::bus_interface, "GetId", on_bus_answer, &delivery, nullptr) >= 0) {
        wait_for([&] { return delivery.answered || !HostBus(); }, timeout, idle);
        outcome = delivery.lost ? static_cast<OSErr>(procNotFound) : static_cast<OSErr>(noErr);
    }
    sd_bus_slot_unref(message_slot);
    sd_bus_slot_unref(question_slot);
    return outcome;
}

// Sends to NAME, a name on the bus. An IDLE procedure without a wait for the reply asks for certainty that
// the event has reached its program.
static OSErr send_on_bus(const AppleEvent *event, AppleEvent *reply, const std::string &name, bool wait,
                         std::int32_t timeout, AEIdleProc idle) {
    sd_bus *const bus = HostBus();
    sd_bus_message *message = nullptr;
    if (!bus)
        return connectionInvalid;
    const int result = common::new_event_call(
        bus, name,
        {code_text(event->data->event_class), code_text(event->data->event_id), parameters_of(*event)},
        &message);
    OSErr outcome = result < 0 ? static_cast<OSErr>(connectionInvalid) : static_cast<OSErr>(noErr);
    if (result >= 0 && !wait && idle) {
        outcome = deliver(bus, message, timeout, idle);
    } else if (result >= 0 && !wait) {
        sd_bus_message_set_expect_reply(message, 0);
        if (sd_bus_send(bus, message, nullptr) < 0)
            outcome = connectionInvalid;
    } else if (result >= 0) {
        Waiting waiting;
        waiting.reply = reply;
        sd_bus_slot *slot = nullptr;
        if (sd_bus_call_async(bus, &slot, message, on_reply, &waiting, UINT64_MAX) < 0) {
            outcome = connectionInvalid;
        } else {
            outcome = wait_for([&] { return waiting.done || !HostBus(); }, timeout, idle);
            if (outcome == noErr)
                outcome = waiting.done ? waiting.result : static_cast<OSErr>(connectionInvalid);
        }
        sd_bus_slot_unref(slot);
    }
    sd_bus_message_unref(message);
    return outcome;
}

// Gives the document of an open event to the application at the POSIX path APPLICATION.
static OSErr open_document(const std::string &application, const AppleEvent *event) {
    FSSpec spec;
    static FSRef reference;
    AEDescList list;
    OSErr error = AEGetParamDesc(event, keyDirectObject, typeAEList, &list);
    if (error == noErr)
        error = AEGetNthPtr(&list, 1, typeFSS, &spec, sizeof spec, nullptr);
    AEDisposeDesc(&list);
    if (error == noErr)
        error = FSpMakeFSRef(&spec, &reference);
    return error == noErr ? open_in_application(application, reference.path) : error;
}

// The path of an application that is not on the bus; empty when it has gone.
static std::string plain_path(const ProcessSerialNumber &psn) {
    if (psn.highLongOfPSN == psn_pending) {
        const PendingStart *const start = find_pending_start(psn.lowLongOfPSN);
        return start ? start->path : "";
    }
    const pid_t pid = static_cast<pid_t>(psn.lowLongOfPSN);
    const std::string program = common::program_of_process(pid), asked = asked_path(pid);
    return common::canonical_path(asked) == program ? asked : program;
}

// Sends to an application that is not on the bus; it can only be given documents and be asked to quit.
static OSErr send_to_plain(const AppleEvent *event, const ProcessSerialNumber &psn) {
    if (event->data->event_class != four("aevt"))
        return errAEEventNotHandled;
    const std::string path = plain_path(psn);
    const bool pending = psn.highLongOfPSN == psn_pending;
    if (event->data->event_id == four("quit")) {
        if (pending)
            forget_pending_start(psn.lowLongOfPSN);
        else if (kill(static_cast<pid_t>(psn.lowLongOfPSN), SIGTERM) != 0)
            return procNotFound;
        return noErr;
    }
    if (event->data->event_id != four("odoc"))
        return errAEEventNotHandled;
    if (path.empty())
        return procNotFound;
    if (pending)
        forget_pending_start(psn.lowLongOfPSN);
    return open_document(path, event);
}

// Ends a program launched from here that has no name on the bus, together with the programs it started.
static OSErr end_program(const Launched &program) {
    return !program.exited && kill(-program.pid, SIGTERM) == 0 ? static_cast<OSErr>(noErr)
                                                               : static_cast<OSErr>(procNotFound);
}

// Sets PSN to the process that TARGET names. A quit by signature only reaches programs launched from here.
static OSErr find_target(const AEDesc &target, bool quits, ProcessSerialNumber *psn) {
    if (target.descriptorType == typeProcessSerialNumber &&
        target.data->bytes.size() == sizeof(ProcessSerialNumber)) {
        std::memcpy(psn, target.data->bytes.data(), sizeof *psn);
        return noErr;
    }
    OSType signature = 0;
    if (target.descriptorType != typeApplSignature || target.data->bytes.size() != sizeof signature)
        return paramErr;
    std::memcpy(&signature, target.data->bytes.data(), sizeof signature);
    for (const Launched &program : launched_programs)
        if (program.signature == signature && !program.exited) {
            *psn = {psn_launched, static_cast<std::uint32_t>(program.pid)};
            return noErr;
        }
    if (!quits)
        for (const Peer &peer : bus_peers)
            if (peer.known && peer.signature == signature) {
                *psn = {psn_bus, static_cast<std::uint32_t>(peer.pid)};
                return noErr;
            }
    return procNotFound;
}

// An event that is handled during a wait may forget the program, so it is looked up anew each time.
static bool has_ended(pid_t pid) {
    const Launched *const program = find_launched(pid);
    return !program || program->exited;
}

// Until then a program that was only just launched waits for its name on the bus, and one that has given it
// back for its end.
static bool has_settled(pid_t pid) {
    return has_ended(pid) || !bus_owner(psn_launched, pid).empty() || !HostBus();
}

OSErr AESend(const AppleEvent *event, AppleEvent *reply, std::int32_t mode, std::int16_t,
             std::int32_t timeout, AEIdleProc idle, AEFilterProc) {
    const bool wait = (mode & 3) == kAEWaitReply;
    const std::int32_t limit = timeout == kAEDefaultTimeout ? 3600 : timeout;
    const bool quits = event->data->event_class == four("aevt") && event->data->event_id == four("quit");
    ProcessSerialNumber psn;
    const OSErr error = find_target(event->data->target, quits, &psn);
    if (error != noErr)
        return error;
    if (psn.highLongOfPSN == psn_plain || psn.highLongOfPSN == psn_pending)
        return send_to_plain(event, psn);
    const pid_t pid = static_cast<pid_t>(psn.lowLongOfPSN);
    if (pid == getpid())
        return dispatch_event(event, reply);
    const Launched *const program = psn.highLongOfPSN == psn_launched ? find_launched(pid) : nullptr;
    if ((psn.highLongOfPSN == psn_launched && !program) || (psn.highLongOfPSN == psn_bus && !find_peer(pid)))
        return procNotFound;
    if (quits && program && (!HostBus() || bus_owner(psn.highLongOfPSN, pid).empty()))
        return end_program(*program);
    if (!HostBus())
        return connectionInvalid;

    tool_waits += wait;
    OSErr result = noErr;
    for (;;) {
        if (program)
            result = wait_for([pid] { return has_settled(pid); }, limit, idle);
        if (result != noErr)
            break;
        if (bus_owner(psn.highLongOfPSN, pid).empty()) {
            result = program && has_ended(pid) ? procNotFound : connectionInvalid;
            break;
        }
        result = send_on_bus(event, reply, common::application_bus_name(pid), wait, limit, idle);
        // A program that has just given its name back is waited for.
        if (result != procNotFound || !program || wait || !bus_owner(psn.highLongOfPSN, pid).empty())
            break;
    }
    tool_waits -= wait;
    return result;
}

} // namespace quillon
