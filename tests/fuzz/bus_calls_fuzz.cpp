// Calls of the shell's service: each arrives at its handler as it was sent, the answer says what the handler
// said, and a call that is malformed is refused and reaches none.
#include <sys/socket.h>

#include <optional>

#include "common/path_forms.h"
#include "common/session_bus.h"
#include "common/utf8.h"
#include "fuzz/fuzz.h"
#include "linux/events/ae_receive.h"
#include "linux/events/event_sources.h"
#include "linux/events/shell_service.h"
#include "support/temporary_home.h"
#include "toolbox/apple_events.h"
#include "toolbox/files.h"

namespace quillon::test {

const std::vector<std::string> fuzz_words = {"\x01\x04pdf\x20",
                                             "\x02\x05x.tex",
                                             "\x03\x03",
                                             std::string(3, '\0'),
                                             "\x02\x08/usr/bin",
                                             "\xC3\xA9",
                                             "\xFF\xFE",
                                             std::string(1, '\0'),
                                             "\x05\x01\x01",
                                             "\x04view",
                                             "\x06\x01\x02\x03\x04\x05",
                                             "\x09\x08\x07",
                                             "\x0C\x0B\x0A",
                                             "\x0A/usr/b\xFFn",
                                             "/none"};
const int fuzz_runs = 4000;

namespace {

// What a handler was given, and what it says.
struct Seen {
    OSType id = 0;
    std::string text, folder;
    std::optional<std::int32_t> view, edit, answer, result;
};
std::vector<Seen> seen;
std::int32_t status_to_say = 0;
OSErr error_to_give = noErr;
OSType outcome_to_say = four("none");
std::string text_to_say;

std::string text_of(const AppleEvent *event, OSType keyword) {
    std::size_t size = 0;
    if (AEGetParamPtr(event, keyword, typeChar, nullptr, 0, &size) != noErr)
        return "";
    std::string text(size, '\0');
    AEGetParamPtr(event, keyword, typeChar, text.data(), size, nullptr);
    return text;
}

std::optional<std::int32_t> number_of(const AppleEvent *event, OSType keyword) {
    std::int32_t number = 0;
    if (AEGetParamPtr(event, keyword, typeLongInteger, &number, sizeof number, nullptr) != noErr)
        return std::nullopt;
    return number;
}

std::string path_of(const FSSpec &spec) {
    static FSRef reference;
    return FSpMakeFSRef(&spec, &reference) == noErr ? reference.path : "";
}

OSErr handle(const AppleEvent *event, AppleEvent *reply, std::int32_t id) {
    Seen call;
    FSSpec spec;
    AEDescList list;
    call.id = static_cast<OSType>(id);
    call.text = text_of(event, keyDirectObject);
    if (AEGetParamPtr(event, four("dest"), typeFSS, &spec, sizeof spec, nullptr) == noErr)
        call.folder = path_of(spec);
    if (AEGetParamDesc(event, keyDirectObject, typeAEList, &list) == noErr) {
        if (AEGetNthPtr(&list, 1, typeFSS, &spec, sizeof spec, nullptr) == noErr)
            call.folder = path_of(spec);
        AEDisposeDesc(&list);
    }
    call.view = number_of(event, four("view"));
    call.edit = number_of(event, four("edit"));
    call.answer = number_of(event, four("answ"));
    call.result = number_of(event, four("rslt"));
    require(call.answer.value_or(0) == 0 || answering_client() == ":1.7", "another client answers");
    require(call.id != four("exec") || client_command_runs() == (call.answer ? 1 : 0),
            "a command's options are not known while it runs");
    seen.push_back(call);
    if (reply->data) {
        if (call.id == four("exec"))
            AEPutParamPtr(reply, keyDirectObject, typeLongInteger, &status_to_say, sizeof status_to_say);
        else
            AEPutParamPtr(reply, keyDirectObject, typeChar, text_to_say.data(), text_to_say.size());
        AEPutParamPtr(reply, keyErrorString, typeChar, text_to_say.data(), text_to_say.size());
        if (call.result) {
            AEPutParamPtr(reply, four("errf"), typeChar, "/a\xFF", 3);
            AEPutParamPtr(reply, four("errm"), typeChar, text_to_say.data(), text_to_say.size());
            AEPutParamPtr(reply, four("errl"), typeLongInteger, &status_to_say, sizeof status_to_say);
        }
    }
    AESetCallOutcome(outcome_to_say);
    return error_to_give;
}

// Answers what the service asks of the bus itself: who the client is.
int answer_as_bus(sd_bus_message *message, void *, sd_bus_error *) {
    if (sd_bus_message_is_method_call(message, "org.freedesktop.DBus", "GetNameOwner"))
        return sd_bus_reply_method_return(message, "s", ":1.7");
    return sd_bus_message_is_method_call(message, "org.freedesktop.DBus", nullptr) > 0
               ? sd_bus_reply_method_return(message, "")
               : 0;
}

// Two ends of a connection: the shell's service, and its client.
struct Connection {
    sd_bus *service = nullptr, *client = nullptr;

    Connection() {
        int ends[2];
        sd_id128_t id = {};
        bool good = ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) == 0;
        good = good && sd_bus_new(&service) >= 0 && sd_bus_set_fd(service, ends[0], ends[0]) >= 0 &&
               sd_bus_set_server(service, 1, id) >= 0 && sd_bus_set_anonymous(service, 1) >= 0 &&
               sd_bus_set_trusted(service, 1) >= 0 && offer_shell_service(service, 0) != 0 &&
               sd_bus_start(service) >= 0;
        good = good && sd_bus_new(&client) >= 0 && sd_bus_set_fd(client, ends[1], ends[1]) >= 0 &&
               sd_bus_set_anonymous(client, 1) >= 0 &&
               sd_bus_add_filter(client, nullptr, answer_as_bus, nullptr) >= 0 && sd_bus_start(client) >= 0;
        require(good, "there is no connection");
        for (const char *const id_text : {"exec", "find", "loca", "frmt"})
            AEInstallEventHandler(four("QUIL"), code_number_of(id_text), handle,
                                  static_cast<std::int32_t>(code_number_of(id_text)));
        AEInstallEventHandler(four("aevt"), four("odoc"), handle, static_cast<std::int32_t>(four("odoc")));
        AEInstallEventHandler(four("aevt"), four("oapp"), handle, static_cast<std::int32_t>(four("oapp")));
    }
    static OSType code_number_of(const char *code) {
        OSType number = 0;
        for (; *code; code++)
            number = number << 8 | static_cast<unsigned char>(*code);
        return number;
    }
};

Connection &connection() {
    static Connection made;
    return made;
}

int any_event(const EventRecord &, const void *) {
    return 1;
}

// What came back: the error's name, empty for none, and the answer, which the owner releases.
struct Answer {
    bool came = false;
    std::string error;
    sd_bus_message *message = nullptr;
    ~Answer() { sd_bus_message_unref(message); }
};

int on_answer(sd_bus_message *message, void *context, sd_bus_error *) {
    auto &answer = *static_cast<Answer *>(context);
    const sd_bus_error *const error = sd_bus_message_get_error(message);
    answer.came = true;
    answer.error = error ? error->name : "";
    answer.message = sd_bus_message_ref(message);
    return 0;
}

// Sends CALL, lets the shell handle what it queues, and waits for the answer. Releases CALL.
void send(sd_bus_message *call, Answer &answer) {
    Connection &both = connection();
    seen.clear();
    require(sd_bus_message_set_sender(call, ":1.7") >= 0 &&
                sd_bus_call_async(both.client, nullptr, call, on_answer, &answer, UINT64_MAX) >= 0,
            "a call cannot be sent");
    sd_bus_message_unref(call);
    for (int idle = 0; !answer.came && idle < 1000; idle++) {
        EventRecord event;
        if (TakeFromQueue(any_event, nullptr, &event))
            AEProcessAppleEvent(&event);
        if (sd_bus_process(both.service, nullptr) > 0 || sd_bus_process(both.client, nullptr) > 0)
            idle = 0;
    }
    require(answer.came, "a call is not answered");
    EventRecord event;
    while (TakeFromQueue(any_event, nullptr, &event))
        AEProcessAppleEvent(&event);
}

sd_bus_message *new_call(const char *interface, const char *member) {
    sd_bus_message *call = nullptr;
    require(sd_bus_message_new_method_call(connection().client, &call, common::shell_name, common::shell_path,
                                           interface, member) >= 0,
            "there is no call");
    return call;
}

void good(int result) {
    require(result >= 0, "a call cannot be filled");
}

void append_bytes(sd_bus_message *call, const std::string &bytes) {
    good(sd_bus_message_append_array(call, 'y', bytes.data(), bytes.size()));
}

// GLib's byte strings end with a zero byte.
std::string taken_bytes(std::string bytes) {
    if (!bytes.empty() && bytes.back() == '\0')
        bytes.pop_back();
    return bytes;
}

std::string as_text(const std::string &bytes) {
    common::Utf8Feed feed;
    const std::string text = feed.take(bytes);
    return text + feed.finish();
}

// A folder of which is known whether it is there.
const std::string &some_folder(Choices &choices) {
    static const std::string folders[] = {
        "", "/usr/bin", "/usr", "/none/deeper", "relative\xFF", std::string("/usr\0/x", 7)};
    return choices.of(folders);
}

bool is_there(const std::string &path) {
    return path == "/usr/bin" || path == "/usr";
}

void check_outcome(const Answer &answer, const std::string &command, const std::string &folder,
                   bool options) {
    if (!folder.empty() && !is_there(folder)) {
        require(answer.error == SD_BUS_ERROR_INVALID_ARGS && seen.empty(), "a command runs in no folder");
        return;
    }
    require(seen.size() == 1 && seen[0].id == four("exec") && seen[0].text == command &&
                seen[0].folder == folder,
            "a command arrives as another");
    const std::string expected = error_to_give != noErr           ? "org.quillon.Shell1.Error.Busy"
                                 : outcome_to_say == four("nrun") ? "org.quillon.Shell1.Error.NotRun"
                                 : outcome_to_say == four("cncl") ? "org.quillon.Shell1.Error.Cancelled"
                                 : outcome_to_say == four("unkn") ? "org.quillon.Shell1.Error.UnknownCommand"
                                                                  : "";
    require(answer.error == expected, "a command ends otherwise");
    if (!expected.empty())
        return;
    std::int32_t status = 0;
    require(sd_bus_message_read(answer.message, "i", &status) > 0 && status == status_to_say,
            "a command has another status");
    require(seen[0].result.has_value() == options, "a place of an error is asked for or not wrongly");
    if (!options)
        return;
    std::string text;
    std::int32_t line = 0;
    const char *name = nullptr, *message = nullptr;
    const void *file = nullptr;
    std::size_t size = 0;
    require(sd_bus_message_enter_container(answer.message, 'a', "{sv}") > 0, "there is no place of an error");
    require(sd_bus_message_enter_container(answer.message, 'e', "sv") > 0 &&
                sd_bus_message_read(answer.message, "s", &name) > 0 && std::string(name) == "file" &&
                sd_bus_message_enter_container(answer.message, 'v', "ay") > 0 &&
                sd_bus_message_read_array(answer.message, 'y', &file, &size) > 0 &&
                std::string(static_cast<const char *>(file), size) == "/a\xFF" &&
                sd_bus_message_exit_container(answer.message) > 0 &&
                sd_bus_message_exit_container(answer.message) > 0,
            "an error is in another file");
    require(sd_bus_message_read(answer.message, "{sv}", &name, "i", &line) > 0 && line == status_to_say,
            "an error is in another line");
    require(sd_bus_message_read(answer.message, "{sv}", &name, "s", &message) > 0 &&
                message == as_text(text_to_say),
            "an error has another message");
}

void call_exec(Choices &choices, bool raw) {
    Answer answer;
    const std::string folder = some_folder(choices), bytes = choices.bytes(60);
    sd_bus_message *const call = new_call(common::shell_interface, raw ? "ExecRaw" : "Exec");
    if (raw) {
        append_bytes(call, bytes);
        append_bytes(call, folder);
        send(call, answer);
        check_outcome(answer, taken_bytes(bytes), taken_bytes(folder), false);
        return;
    }
    const std::string command = as_text(bytes), place = as_text(folder);
    good(sd_bus_message_append(call, "ss", command.c_str(), place.c_str()));
    send(call, answer);
    check_outcome(answer, command, place, false);
}

void call_run(Choices &choices) {
    static const std::string names[] = {"view", "edit", "answer", "none", ""};
    Answer answer;
    std::map<std::string, std::int32_t> options;
    bool refused = false;
    const std::string folder = some_folder(choices), command = choices.bytes(60);
    sd_bus_message *const call = new_call(common::shell_interface, "Run");
    append_bytes(call, command);
    append_bytes(call, folder);
    good(sd_bus_message_open_container(call, 'a', "{sv}"));
    for (std::size_t count = choices.below(5); count > 0; count--) {
        const std::string name = choices.of(names);
        const std::size_t kind = choices.below(6), value = choices.below(2);
        refused = refused || name == "none" || name.empty() || kind >= 4;
        if (kind < 4)
            good(sd_bus_message_append(call, "{sv}", name.c_str(), "b", static_cast<int>(value)));
        else if (kind == 4)
            good(sd_bus_message_append(call, "{sv}", name.c_str(), "i", static_cast<int>(value)));
        else
            good(sd_bus_message_append(call, "{sv}", name.c_str(), "as", 1, "x"));
        options[name] = static_cast<std::int32_t>(value);
    }
    good(sd_bus_message_close_container(call));
    send(call, answer);
    if (refused) {
        require(answer.error == SD_BUS_ERROR_INVALID_ARGS && seen.empty(),
                "an option is taken that there is not");
        return;
    }
    check_outcome(answer, taken_bytes(command), taken_bytes(folder), true);
    require(seen.empty() || (seen[0].view == options["view"] && seen[0].edit == options["edit"] &&
                             seen[0].answer == options["answer"]),
            "an option has another value");
}

void call_text(Choices &choices, const char *member, OSType id) {
    Answer answer;
    const std::string text = as_text(choices.bytes(60));
    const char *said = nullptr;
    sd_bus_message *const call = new_call(common::shell_interface, member);
    if (id != four("frmt"))
        good(sd_bus_message_append(call, "s", text.c_str()));
    send(call, answer);
    require(answer.error.empty() && seen.size() == 1 && seen[0].id == id, "a request does not arrive");
    require(id == four("frmt") || seen[0].text == text, "a request arrives as another");
    require(sd_bus_message_read(answer.message, "s", &said) > 0, "a request is not answered with a text");
    require(id == four("loca") ? *said == '\0' : said == as_text(text_to_say),
            "a request is answered otherwise");
}

void call_open(Choices &choices, bool raw) {
    Answer answer;
    const std::string path = some_folder(choices);
    const std::string text = as_text(path);
    sd_bus_message *const call = new_call(common::shell_interface, raw ? "OpenRaw" : "Open");
    if (raw)
        append_bytes(call, path);
    else
        good(sd_bus_message_append(call, "s", text.c_str()));
    send(call, answer);
    const bool there = is_there(raw ? taken_bytes(path) : text);
    require(answer.error == (there ? "" : SD_BUS_ERROR_INVALID_ARGS), "a file is opened or refused wrongly");
    require(seen.size() == (there ? 1u : 0u) &&
                (!there || (seen[0].id == four("odoc") && seen[0].folder == path)),
            "another file is opened");
}

// The desktop's own interface: files as URIs, and a token.
void call_open_uris(Choices &choices) {
    Answer answer;
    std::vector<std::string> paths;
    bool all_there = true;
    sd_bus_message *const call = new_call(common::desktop_interface, "Open");
    good(sd_bus_message_open_container(call, 'a', "s"));
    for (std::size_t count = choices.below(4); count > 0; count--) {
        const std::string path = some_folder(choices);
        const std::string uri = choices.below(4) ? common::file_uri(path) : as_text(choices.bytes(20));
        const std::string meant = common::path_of_uri(uri);
        good(sd_bus_message_append(call, "s", uri.c_str()));
        if (all_there && !is_there(meant))
            all_there = false;
        if (all_there)
            paths.push_back(meant);
    }
    good(sd_bus_message_close_container(call));
    good(sd_bus_message_append(call, "a{sv}", 1, "desktop-startup-id", "s", "token"));
    send(call, answer);
    require(answer.error == (all_there ? "" : SD_BUS_ERROR_INVALID_ARGS),
            "files are opened or refused wrongly");
    std::vector<std::string> opened;
    for (const Seen &one : seen)
        if (one.id == four("odoc"))
            opened.push_back(one.folder);
    require(opened == paths, "other files are opened");
}

void call_plain(Choices &choices) {
    static const char *const members[] = {"Follow", "Follow", "Answerers", "Cancel", "Quit"};
    Answer answer;
    const std::string member = choices.of(members);
    sd_bus_message *const call = new_call(common::shell_interface, member.c_str());
    if (member == "Follow")
        good(sd_bus_message_append(call, "b", static_cast<int>(choices.below(2))));
    CancelRequested();
    send(call, answer);
    require(answer.error.empty() && seen.empty(), "a call is refused");
    require(CancelRequested() == (member == "Cancel" ? 1 : 0), "a cancel is not heard, or heard wrongly");
    require(member != "Quit" || LeaveRequested(), "the shell does not leave");
    int person = 1;
    require(member != "Answerers" || (sd_bus_message_read(answer.message, "b", &person) > 0 && person == 0 &&
                                      sd_bus_message_enter_container(answer.message, 'a', "s") >= 0 &&
                                      sd_bus_message_at_end(answer.message, 0) > 0),
            "somebody answers while nothing runs");
}

void call_desktop(Choices &choices) {
    Answer answer;
    const bool action = choices.below(2) == 0;
    sd_bus_message *const call = new_call(common::desktop_interface, action ? "ActivateAction" : "Activate");
    if (action)
        good(sd_bus_message_append(call, "sava{sv}", "new", 0, 0));
    else if (choices.below(2))
        good(sd_bus_message_append(call, "a{sv}", 2, "activation-token", "s", "token", "x", "i", 1));
    else
        good(sd_bus_message_append(call, "a{sv}", 1, "activation-token", "i", 1));
    send(call, answer);
    require(answer.error == (action ? SD_BUS_ERROR_INVALID_ARGS : ""),
            "the desktop is refused or heard wrongly");
    require(seen.size() == (action ? 0u : 1u) && (action || seen[0].id == four("oapp")),
            "another event arrives");
}

// A call with other types than its method takes.
void call_malformed(Choices &choices) {
    static const char *const members[] = {"Exec", "ExecRaw", "Run",    "Locate", "Find",
                                          "Open", "OpenRaw", "Follow", "None"};
    Answer answer;
    sd_bus_message *const call = new_call(common::shell_interface, choices.of(members));
    if (choices.below(2))
        good(sd_bus_message_append(call, "u", 7u));
    else
        good(sd_bus_message_append(call, "a{sv}", 1, "k", "s", "v"));
    send(call, answer);
    require(!answer.error.empty() && seen.empty(), "a malformed call is taken");
}

} // namespace

void fuzz_one(const std::string &input) {
    static const OSType outcomes[] = {four("none"), four("none"), four("nrun"), four("cncl"), four("unkn")};
    Choices choices(input);
    for (int count = 0; count == 0 || (count < 3 && !choices.ended()); count++) {
        const std::size_t method = choices.below(12);
        status_to_say = static_cast<std::int32_t>(choices.below(std::size_t{1} << 32));
        outcome_to_say = choices.of(outcomes);
        const bool fails = choices.below(5) == 4 && method <= 3;
        error_to_give = fails ? static_cast<OSErr>(errAEEventNotHandled) : static_cast<OSErr>(noErr);
        text_to_say = choices.bytes(30);
        if (method <= 1)
            call_exec(choices, method == 1);
        else if (method <= 3)
            call_run(choices);
        else if (method <= 5)
            call_open(choices, method == 5);
        else if (method == 6)
            call_text(choices, "Find", four("find"));
        else if (method == 7 && choices.below(2))
            call_text(choices, "Locate", four("loca"));
        else if (method == 7)
            call_text(choices, "Formats", four("frmt"));
        else if (method == 8)
            call_open_uris(choices);
        else if (method == 9)
            call_plain(choices);
        else if (method == 10)
            call_desktop(choices);
        else
            call_malformed(choices);
    }
}

} // namespace quillon::test
