#include "linux/events/ae_receive.h"

#include <cstring>
#include <map>
#include <string>

#include "linux/events/ae_codec.h"
#include "linux/events/ae_data.h"
#include "linux/events/event_sources.h"
#include "linux/events/peers.h"
#include "linux/events/shell_service.h"
#include "toolbox/codes.h"
#include "toolbox/files.h"
#include "toolbox/received_events.h"

namespace quillon {

struct Received {
    AppleEvent event;
    sd_bus_message *call = nullptr;
    AnswerProcedure answer = nullptr;
    std::string sender;
    sd_bus_track *track = nullptr; // of a sender that waits for the answer to a command
};

struct Handler {
    AEEventHandler procedure;
    std::int32_t refcon;
};

static std::map<std::uint32_t, Received> received_events;
static std::uint32_t last_serial = 0;
static std::map<std::pair<OSType, OSType>, Handler> handlers;
static OSType outcome = four("none");
static std::string client_that_answers;
static std::string client_that_runs; // whose command runs now; empty for a sender that waits for no answer
static int runs_with_options = 0;
static std::string client_that_follows; // it is sent the console's text while its command runs

int client_command_runs() {
    return runs_with_options;
}

const std::string &answering_client() {
    return client_that_answers;
}

OSErr AEInstallEventHandler(OSType event_class, OSType event_id, AEEventHandler handler,
                            std::int32_t refcon) {
    handlers[{event_class, event_id}] = {handler, refcon};
    return noErr;
}

OSErr AESetInteractionAllowed(std::int32_t) {
    return noErr;
}

void AESetCallOutcome(OSType how) {
    outcome = how;
}

OSType call_outcome() {
    return outcome;
}

static bool is_command(OSType event_class, OSType event_id) {
    return event_class == four("QUIL") && event_id == four("exec");
}

static void release(Received &received) {
    AEDisposeDesc(&received.event);
    sd_bus_message_unref(received.call);
    sd_bus_track_unref(received.track);
}

static int is_command_from(const EventRecord &event, const void *sender) {
    const auto found = received_events.find(event.serial);
    return event.what == kHighLevelEvent && is_command(event.message, high_level_event_id(event)) &&
           found != received_events.end() && found->second.sender == static_cast<const char *>(sender);
}

int cancel_commands_of(const char *sender) {
    int count = 0;
    EventRecord event;
    const std::string name = sender;
    while (TakeFromQueue(is_command_from, name.c_str(), &event)) {
        const auto found = received_events.find(event.serial);
        Received received = found->second;
        received_events.erase(found);
        AppleEvent reply;
        const std::int32_t failure = 1;
        ae_make_record(&reply, four("aevt"), four("ansr"));
        AEPutParamPtr(&reply, keyDirectObject, typeLongInteger, &failure, sizeof failure);
        const OSType before = outcome;
        outcome = four("cncl");
        received.answer(received.call, noErr, &reply);
        outcome = before;
        AEDisposeDesc(&reply);
        release(received);
        count++;
    }
    if (client_that_runs == name) {
        RequestCancel();
        count++;
    }
    return count;
}

// A client that waits for the answer to a command and goes takes the command with it.
static sd_bus_track *track_client(sd_bus_message *call) {
    sd_bus_track *track = nullptr;
    const auto has_gone = [](sd_bus_track *, void *message) {
        cancel_commands_of(sd_bus_message_get_sender(static_cast<sd_bus_message *>(message)));
        return 1; // with 0 the library would call again and again
    };
    if (sd_bus_message_get_expect_reply(call) <= 0 ||
        sd_bus_track_new(sd_bus_message_get_bus(call), &track, has_gone, call) < 0)
        return nullptr;
    sd_bus_track_add_sender(track, call);
    return track;
}

int queue_received_event(AppleEvent event, sd_bus_message *call, AnswerProcedure answer) {
    Received received;
    received.event = event;
    received.call = sd_bus_message_ref(call);
    received.answer = answer;
    if (call && sd_bus_message_get_sender(call))
        received.sender = sd_bus_message_get_sender(call);
    if (!received.sender.empty() && is_command(event.data->event_class, event.data->event_id))
        received.track = track_client(call);
    if (++last_serial == 0)
        last_serial = 1;
    if (!PostHighLevelEvent(event.data->event_class, event.data->event_id, last_serial)) {
        release(received);
        return 0;
    }
    received_events[last_serial] = received;
    return 1;
}

OSErr dispatch_event(const AppleEvent *event, AppleEvent *reply) {
    outcome = four("none");
    const auto handler = handlers.find({event->data->event_class, event->data->event_id});
    return handler == handlers.end() ? static_cast<OSErr>(errAEEventNotHandled)
                                     : handler->second.procedure(event, reply, handler->second.refcon);
}

static int is_from(const EventRecord &event, const void *owner) {
    const auto found = received_events.find(event.serial);
    return event.what == kHighLevelEvent && found != received_events.end() &&
           found->second.sender == static_cast<const char *>(owner);
}

int events_wait_from(const char *owner) {
    return QueueHolds(is_from, owner);
}

static void begin_command(const Received &received) {
    std::int32_t answers = 0, follows = 0;
    AEGetParamPtr(&received.event, four("foll"), typeLongInteger, &follows, sizeof follows, nullptr);
    if (follows && follow_console(received.sender.c_str()))
        client_that_follows = received.sender;
    runs_with_options = AEGetParamPtr(&received.event, four("answ"), typeLongInteger, &answers,
                                      sizeof answers, nullptr) == noErr;
    client_that_answers = answers ? received.sender : "";
    client_that_runs = received.track ? received.sender : "";
}

static void end_command() {
    if (!client_that_follows.empty())
        leave_console(client_that_follows.c_str());
    client_that_follows.clear();
    runs_with_options = 0;
    client_that_answers.clear();
    client_that_runs.clear();
}

OSErr AEProcessAppleEvent(const EventRecord *record) {
    const auto found = received_events.find(record->serial);
    if (found == received_events.end()) {
        // Only events of the host itself have no entry; they carry no parameters and want no reply.
        AppleEvent event, reply;
        ae_make_record(&event, record->message, high_level_event_id(*record));
        const OSErr result = dispatch_event(&event, &reply);
        AEDisposeDesc(&event);
        return result;
    }
    Received received = found->second;
    received_events.erase(found);
    AppleEvent reply;
    if (received.answer && (!received.call || sd_bus_message_get_expect_reply(received.call) > 0))
        ae_make_record(&reply, four("aevt"), four("ansr"));
    const bool leaves = record->message == four("aevt") && high_level_event_id(*record) == four("quit");
    if (leaves && received.answer) {
        // The handler ends the program, so the answer is sent first.
        received.answer(received.call, noErr, &reply);
        if (HostBus())
            sd_bus_flush(HostBus());
    }
    const bool runs = is_command(record->message, high_level_event_id(*record));
    if (runs)
        begin_command(received);
    const OSErr result = dispatch_event(&received.event, &reply);
    if (runs)
        end_command();
    if (!leaves && received.answer)
        received.answer(received.call, result, &reply);
    AEDisposeDesc(&reply);
    release(received);
    return result;
}

static void answer_application_event(sd_bus_message *call, OSErr result, const AppleEvent *reply) {
    if (HostBus())
        common::answer_event(call, result, parameters_of(*reply));
}

// A tool's report counts only from a program that this shell launched.
static bool is_trusted(OSType event_class, OSType event_id, const char *sender) {
    const bool reports = is_tool_report(event_class, event_id);
    const bool of_the_host = event_class == four("QUIL") && event_id == four("gone");
    return !of_the_host && (!reports || (sender && find_launched_by_owner(sender)));
}

int receive_application_event(sd_bus_message *call, sd_bus_error *error) {
    common::Event received;
    OSType event_class = 0, event_id = 0;
    const int result = common::read_event(call, received);
    if (result < 0)
        return result;
    if (!parse_code(received.event_class, &event_class) || !parse_code(received.id, &event_id))
        return sd_bus_error_set(error, SD_BUS_ERROR_INVALID_ARGS, "a class and an id have four characters");
    if (!is_trusted(event_class, event_id, sd_bus_message_get_sender(call)))
        return sd_bus_reply_method_return(call, "ia{s(sv)}", static_cast<std::int32_t>(errAEEventNotHandled),
                                          0);
    AppleEvent event;
    ae_make_record(&event, event_class, event_id);
    if (!take_parameters(received.parameters, &event)) {
        AEDisposeDesc(&event);
        return sd_bus_error_set(error, SD_BUS_ERROR_INVALID_ARGS, "a parameter is (type, value)");
    }
    if (!queue_received_event(event, call, answer_application_event))
        return sd_bus_error_set(error, "org.quillon.Shell1.Error.Busy", "too many events wait");
    return 1;
}

void MakeReceivedEvent(OSType event_class, OSType event_id, AppleEvent *event) {
    event->data = nullptr;
    ae_make_record(event, event_class, event_id);
}

int QueueReceivedEvent(AppleEvent *event, void (*answered)(OSErr result, const AppleEvent *reply)) {
    const int queued = queue_received_event(
        *event, nullptr,
        [answered](sd_bus_message *, OSErr result, const AppleEvent *reply) { answered(result, reply); });
    *event = AppleEvent();
    return queued;
}

void WalkParameters(const AppleEvent *event,
                    void (*see)(OSType keyword, OSType type, const void *data, std::size_t size,
                                void *context),
                    void *context) {
    if (!event->data)
        return;
    for (const AEItem &item : event->data->items) {
        const auto &bytes = item.value.data->bytes;
        FSSpec spec;
        static FSRef reference;
        if (item.value.descriptorType == typeFSS && bytes.size() == sizeof spec) {
            std::memcpy(&spec, bytes.data(), sizeof spec);
            if (FSpMakeFSRef(&spec, &reference) == noErr)
                see(item.keyword, typeFSS, reference.path, std::strlen(reference.path), context);
        } else {
            see(item.keyword, item.value.descriptorType, bytes.data(), bytes.size(), context);
        }
    }
}

} // namespace quillon
