#include "linux/events/shell_service.h"

#include <cstring>
#include <memory>
#include <string>

#include "common/activation.h"
#include "common/followers.h"
#include "common/path_forms.h"
#include "common/session_bus.h"
#include "common/utf8.h"
#include "front/front.h"
#include "linux/events/ae_data.h"
#include "linux/events/ae_receive.h"
#include "linux/events/event_sources.h"
#include "linux/events/loop.h"
#include "toolbox/files.h"
#include "toolbox/problem_records.h"

namespace quillon {

static int has_window() {
    return std::strcmp(front->name, "desktop") == 0;
}

static std::unique_ptr<common::Followers> followers;
static common::Utf8Feed feed;

int ConsoleFollowed() {
    return followers && followers->any();
}

void FeedConsoleText(const char *text, std::size_t length) {
    sd_bus *const bus = HostBus();
    const std::string whole = feed.take({text, length});
    if (bus && followers && !whole.empty())
        followers->send(
            common::shell_path, common::shell_interface, "ConsoleText", whole.size(),
            [&](sd_bus_message *signal) { return sd_bus_message_append(signal, "s", whole.c_str()); });
}

void MarkTranscript(int begins) {
    sd_bus *const bus = HostBus();
    if (bus && followers)
        followers->send(common::shell_path, common::shell_interface, "ConsoleTranscript", 1,
                        [&](sd_bus_message *signal) { return sd_bus_message_append(signal, "b", begins); });
}

static void put_number(AppleEvent *event, OSType keyword, std::int32_t value) {
    AEPutParamPtr(event, keyword, typeLongInteger, &value, sizeof value);
}

// The text of the parameter KEYWORD of a reply; "" when there is none.
static std::string reply_text(const AppleEvent *reply, OSType keyword) {
    std::size_t size = 0;
    if (AEGetParamPtr(reply, keyword, typeChar, nullptr, 0, &size) != noErr)
        return "";
    std::string text(size, '\0');
    AEGetParamPtr(reply, keyword, typeChar, text.data(), size, nullptr);
    return text;
}

static void answer_text(sd_bus_message *call, const std::string &text) {
    sd_bus_reply_method_return(call, "s", common::valid_utf8(text).c_str());
}

// Answers the call with the error when a command was not run, and gives 1; else 0 with the run's STATUS.
static int answer_failure(sd_bus_message *call, OSErr result, const AppleEvent *reply, std::int32_t *status) {
    const OSType outcome = call_outcome();
    if (result != noErr ||
        AEGetParamPtr(reply, keyDirectObject, typeLongInteger, status, sizeof *status, nullptr))
        sd_bus_reply_method_errorf(call, "org.quillon.Shell1.Error.Busy", "%s",
                                   common::valid_utf8(reply_text(reply, keyErrorString)).c_str());
    else if (outcome == four("nrun"))
        sd_bus_reply_method_errorf(call, "org.quillon.Shell1.Error.NotRun", "the tool could not be run");
    else if (outcome == four("cncl"))
        sd_bus_reply_method_errorf(call, "org.quillon.Shell1.Error.Cancelled", "the run was cancelled");
    else if (outcome == four("unkn"))
        sd_bus_reply_method_errorf(call, "org.quillon.Shell1.Error.UnknownCommand", "no tool has that name");
    else
        return 0;
    return 1;
}

static void answer_exec(sd_bus_message *call, OSErr result, const AppleEvent *reply) {
    std::int32_t status = 0;
    if (!answer_failure(call, result, reply, &status))
        sd_bus_reply_method_return(call, "i", status);
}

static int append_bytes_entry(sd_bus_message *message, const char *name, const std::string &bytes) {
    int result = sd_bus_message_open_container(message, 'e', "sv");
    if (result >= 0)
        result = sd_bus_message_append(message, "s", name);
    if (result >= 0)
        result = sd_bus_message_open_container(message, 'v', "ay");
    if (result >= 0)
        result = sd_bus_message_append_array(message, 'y', bytes.data(), bytes.size());
    if (result >= 0)
        result = sd_bus_message_close_container(message);
    return result < 0 ? result : sd_bus_message_close_container(message);
}

// Answers with the exit code of the tool, and with the file, line and message of its first error. SUMMED_UP:
// also with the line that sums the run up.
static void answer_with_result(sd_bus_message *call, OSErr result, const AppleEvent *reply, int summed_up) {
    std::int32_t status = 0, line = 0;
    sd_bus_message *answer = nullptr;
    if (answer_failure(call, result, reply, &status) || sd_bus_message_new_method_return(call, &answer) < 0)
        return;
    const std::string file = reply_text(reply, four("errf"));
    const std::string message = common::valid_utf8(reply_text(reply, four("errm")));
    AEGetParamPtr(reply, four("errl"), typeLongInteger, &line, sizeof line, nullptr);
    AEGetParamPtr(reply, four("code"), typeLongInteger, &status, sizeof status, nullptr);
    sd_bus_message_append(answer, "i", status);
    sd_bus_message_open_container(answer, 'a', "{sv}");
    if (!file.empty()) {
        append_bytes_entry(answer, "file", file);
        sd_bus_message_append(answer, "{sv}", "line", "i", line);
        sd_bus_message_append(answer, "{sv}", "message", "s", message.c_str());
    }
    const std::string summary =
        summed_up ? common::valid_utf8(reply_text(reply, four("summ"))) : std::string();
    if (const std::string document = reply_text(reply, four("docm")); !document.empty())
        append_bytes_entry(answer, "document", document);
    if (!summary.empty())
        sd_bus_message_append(answer, "{sv}", "summary", "s", summary.c_str());
    sd_bus_message_close_container(answer);
    sd_bus_send(sd_bus_message_get_bus(call), answer, nullptr);
    sd_bus_message_unref(answer);
}

static void answer_run(sd_bus_message *call, OSErr result, const AppleEvent *reply) {
    answer_with_result(call, result, reply, 0);
}

static void answer_run_with_summary(sd_bus_message *call, OSErr result, const AppleEvent *reply) {
    answer_with_result(call, result, reply, 1);
}

// Answers with the problems that the records of the reply tell of. What is too much for one message of the
// bus is left out.
static void answer_problems(sd_bus_message *call, OSErr, const AppleEvent *reply) {
    constexpr std::size_t most_bytes = std::size_t{60} << 20, overhead = 64;
    sd_bus_message *answer = nullptr;
    if (sd_bus_message_new_method_return(call, &answer) < 0)
        return;
    const std::string records = reply_text(reply, keyDirectObject);
    std::string_view rest = records;
    ProblemRecord problem;
    std::size_t size = 0;
    sd_bus_message_open_container(answer, 'a', "(suss)");
    while (next_problem_record(&rest, &problem)) {
        const std::string file = common::valid_utf8(std::string(problem.file));
        const std::string text = common::valid_utf8(std::string(problem.text));
        if ((size += file.size() + text.size() + overhead) > most_bytes)
            break;
        sd_bus_message_append(answer, "(suss)", file.c_str(), static_cast<std::uint32_t>(problem.line),
                              problem_kind_word(problem.kind), text.c_str());
    }
    sd_bus_message_close_container(answer);
    sd_bus_send(sd_bus_message_get_bus(call), answer, nullptr);
    sd_bus_message_unref(answer);
}

static void answer_find(sd_bus_message *call, OSErr, const AppleEvent *reply) {
    answer_text(call, reply_text(reply, keyErrorString));
}

static void answer_formats(sd_bus_message *call, OSErr, const AppleEvent *reply) {
    answer_text(call, reply_text(reply, keyDirectObject));
}

// Answers with the POSIX path for the HFS path that the reply holds.
static void answer_locate(sd_bus_message *call, OSErr, const AppleEvent *reply) {
    static FSRef reference;
    FSSpec spec;
    const std::string hfs_path = reply_text(reply, keyDirectObject);
    const bool found = !hfs_path.empty() && FSMakeFSSpec(0, 0, hfs_path.c_str(), &spec) == noErr &&
                       FSpMakeFSRef(&spec, &reference) == noErr;
    answer_text(call, found ? reference.path : "");
}

static void answer_nothing(sd_bus_message *call, OSErr, const AppleEvent *) {
    sd_bus_reply_method_return(call, "");
}

// Makes the location of what is at PATH. Returns 0 when there is none, which is the case for a path with a
// zero byte.
static int locate_posix(const std::string &path, FSSpec *spec) {
    return path.find('\0') == std::string::npos && FSPathMakeSpec(path.c_str(), spec) == noErr;
}

// Returns PATH as the message of an error can show it.
static const char *printable(const std::string &path) {
    return path.find('\0') == std::string::npos && common::is_utf8(path) ? path.c_str() : "of that name";
}

static int queue_event(AppleEvent event, sd_bus_message *call, AnswerProcedure answer, sd_bus_error *error) {
    if (queue_received_event(event, call, answer))
        return 1;
    return sd_bus_error_set(error, "org.quillon.Shell1.Error.Busy", "too many events wait");
}

// The options of the method Run.
struct RunOptions {
    int view = 0, edit = 0, answer = 0, follow = 0, summary = 0;
    int document = 0; // the command is the POSIX path of a document, which is typeset as the settings say
};

// Queues the event that runs COMMAND in FOLDER (a POSIX path, may be empty). OPTIONS is null for a command
// that has none, whose answer is the status alone.
static int queue_exec(const std::string &command, const std::string &folder, const RunOptions *options,
                      sd_bus_message *call, sd_bus_error *error) {
    AppleEvent event;
    ae_make_record(&event, four("QUIL"), four("exec"));
    if (options) {
        put_number(&event, four("view"), options->view);
        put_number(&event, four("edit"), options->edit);
        put_number(&event, four("answ"), options->answer);
        put_number(&event, four("rslt"), 1);
        put_number(&event, four("foll"), options->follow);
    }
    FSSpec spec;
    if (options && options->document) {
        if (!locate_posix(command, &spec)) {
            AEDisposeDesc(&event);
            return sd_bus_error_setf(error, SD_BUS_ERROR_INVALID_ARGS, "there is no file %s",
                                     printable(command));
        }
        AEPutParamPtr(&event, four("docm"), typeFSS, &spec, sizeof spec);
    } else {
        AEPutParamPtr(&event, keyDirectObject, typeChar, command.data(), command.size());
    }
    if (!folder.empty()) {
        if (!locate_posix(folder, &spec)) {
            AEDisposeDesc(&event);
            return sd_bus_error_setf(error, SD_BUS_ERROR_INVALID_ARGS, "there is no folder %s",
                                     printable(folder));
        }
        AEPutParamPtr(&event, four("dest"), typeFSS, &spec, sizeof spec);
    }
    const AnswerProcedure answer = !options           ? answer_exec
                                   : options->summary ? answer_run_with_summary
                                                      : answer_run;
    return queue_event(event, call, answer, error);
}

static int method_exec(sd_bus_message *call, void *, sd_bus_error *error) {
    const char *command = nullptr, *folder = nullptr;
    const int result = sd_bus_message_read(call, "ss", &command, &folder);
    return result < 0 ? result : queue_exec(command, folder, nullptr, call, error);
}

// Reads bytes. GLib ends what it calls a byte string with a zero byte, which is left out.
static std::string read_array(sd_bus_message *call) {
    const void *data = nullptr;
    std::size_t size = 0;
    if (sd_bus_message_read_array(call, 'y', &data, &size) < 0)
        return "";
    std::string bytes(static_cast<const char *>(data), size);
    if (bytes.ends_with('\0'))
        bytes.pop_back();
    return bytes;
}

static int method_exec_raw(sd_bus_message *call, void *, sd_bus_error *error) {
    const std::string command = read_array(call);
    return queue_exec(command, read_array(call), nullptr, call, error);
}

static int method_run(sd_bus_message *call, void *, sd_bus_error *error) {
    const std::string command = read_array(call), folder = read_array(call);
    RunOptions options;
    int result = sd_bus_message_enter_container(call, 'a', "{sv}");
    while (result >= 0 && (result = sd_bus_message_enter_container(call, 'e', "sv")) > 0) {
        const char *name = nullptr;
        sd_bus_message_read(call, "s", &name);
        const std::string_view option = name;
        int *const value = option == "view"       ? &options.view
                           : option == "edit"     ? &options.edit
                           : option == "answer"   ? &options.answer
                           : option == "follow"   ? &options.follow
                           : option == "summary"  ? &options.summary
                           : option == "document" ? &options.document
                                                  : nullptr;
        if (!value)
            return sd_bus_error_setf(error, SD_BUS_ERROR_INVALID_ARGS, "there is no option %s", name);
        if ((result = sd_bus_message_read(call, "v", "b", value)) < 0)
            return sd_bus_error_setf(error, SD_BUS_ERROR_INVALID_ARGS, "option %s is a boolean", name);
        result = sd_bus_message_exit_container(call);
    }
    return result < 0 ? result : queue_exec(command, folder, &options, call, error);
}

static int method_answerers(sd_bus_message *call, void *, sd_bus_error *) {
    const std::string &client = answering_client();
    // A command with options is its client's: only that one can answer, if it said so.
    const int person = has_window() && !client_command_runs();
    return client.empty() ? sd_bus_reply_method_return(call, "bas", person, 0)
                          : sd_bus_reply_method_return(call, "bas", person, 1, client.c_str());
}

static int queue_text_event(sd_bus_message *call, OSType id, AnswerProcedure answer, sd_bus_error *error) {
    const char *text = nullptr;
    const int result = sd_bus_message_read(call, "s", &text);
    if (result < 0)
        return result;
    AppleEvent event;
    ae_make_record(&event, four("QUIL"), id);
    AEPutParamPtr(&event, keyDirectObject, typeChar, text, std::strlen(text));
    return queue_event(event, call, answer, error);
}

static int method_locate(sd_bus_message *call, void *, sd_bus_error *error) {
    return queue_text_event(call, four("loca"), answer_locate, error);
}

static int method_find(sd_bus_message *call, void *, sd_bus_error *error) {
    return queue_text_event(call, four("find"), answer_find, error);
}

static int method_formats(sd_bus_message *call, void *, sd_bus_error *error) {
    AppleEvent event;
    ae_make_record(&event, four("QUIL"), four("frmt"));
    return queue_event(event, call, answer_formats, error);
}

static int method_problems(sd_bus_message *call, void *, sd_bus_error *error) {
    AppleEvent event;
    ae_make_record(&event, four("QUIL"), four("prob"));
    return queue_event(event, call, answer_problems, error);
}

static int queue_open(const std::string &path, sd_bus_message *call, AnswerProcedure answer,
                      sd_bus_error *error) {
    FSSpec spec;
    if (path.empty() || path[0] != '/' || !locate_posix(path, &spec))
        return sd_bus_error_setf(error, SD_BUS_ERROR_INVALID_ARGS, "there is no file %s", printable(path));
    AppleEvent event;
    AEDesc item, list;
    ae_make_record(&event, four("aevt"), four("odoc"));
    AECreateList(&list);
    AECreateDesc(typeFSS, &spec, sizeof spec, &item);
    AEPutDesc(&list, 0, &item);
    AEPutParamDesc(&event, keyDirectObject, &list);
    AEDisposeDesc(&item);
    AEDisposeDesc(&list);
    return queue_event(event, call, answer, error);
}

static int method_open(sd_bus_message *call, void *, sd_bus_error *error) {
    const char *path = nullptr;
    const int result = sd_bus_message_read(call, "s", &path);
    return result < 0 ? result : queue_open(path, call, answer_nothing, error);
}

static int method_open_raw(sd_bus_message *call, void *, sd_bus_error *error) {
    return queue_open(read_array(call), call, answer_nothing, error);
}

static int method_cancel(sd_bus_message *call, void *, sd_bus_error *) {
    // Who has a command takes back that one alone; who has none cancels what runs.
    const char *const sender = sd_bus_message_get_sender(call);
    if (!sender || cancel_commands_of(sender) == 0)
        RequestCancel();
    return sd_bus_reply_method_return(call, "");
}

static int method_quit(sd_bus_message *call, void *, sd_bus_error *) {
    RequestLeave();
    return sd_bus_reply_method_return(call, "");
}

// A shell with a window waits for no follower. Without one, a client that reads is waited for, so that it
// gets the whole of a long transcript.
static void serve_followers() {
    LoopSleep(has_window() ? 0 : 10);
}

int follow_console(const char *name) {
    if (!followers && HostBus())
        followers = std::make_unique<common::Followers>(HostBus(), nullptr, serve_followers, !has_window());
    return followers && followers->add(name);
}

void leave_console(const char *name) {
    if (followers)
        followers->remove(name);
}

static int method_follow(sd_bus_message *call, void *, sd_bus_error *) {
    int on = 0;
    const int result = sd_bus_message_read(call, "b", &on);
    if (result < 0)
        return result;
    if (on)
        follow_console(sd_bus_message_get_sender(call));
    else
        leave_console(sd_bus_message_get_sender(call));
    return sd_bus_reply_method_return(call, "");
}

static int get_window(sd_bus *, const char *, const char *, const char *, sd_bus_message *reply, void *,
                      sd_bus_error *) {
    return sd_bus_message_append(reply, "b", has_window());
}

static const sd_bus_vtable shell_table[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("Window", "b", get_window, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_METHOD("Exec", "ss", "i", method_exec, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("ExecRaw", "ayay", "i", method_exec_raw, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Run", "ayaya{sv}", "ia{sv}", method_run, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Answerers", "", "bas", method_answerers, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Locate", "s", "s", method_locate, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Find", "s", "s", method_find, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Formats", "", "s", method_formats, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Problems", "", "a(suss)", method_problems, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Open", "s", "", method_open, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("OpenRaw", "ay", "", method_open_raw, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Cancel", "", "", method_cancel, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Quit", "", "", method_quit, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Follow", "b", "", method_follow, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_SIGNAL("ConsoleText", "s", 0),
    SD_BUS_SIGNAL("ConsoleTranscript", "b", 0),
    SD_BUS_VTABLE_END,
};

static int method_activate(sd_bus_message *call, void *, sd_bus_error *error) {
    const std::string token = common::read_platform_data(call);
    front->bring_to_front(token.empty() ? nullptr : token.c_str());
    AppleEvent event;
    ae_make_record(&event, four("aevt"), four("oapp"));
    return queue_event(event, call, answer_nothing, error);
}

static int method_open_uris(sd_bus_message *call, void *, sd_bus_error *error) {
    int result = sd_bus_message_enter_container(call, 'a', "s");
    const char *uri = nullptr;
    while (result >= 0 && (result = sd_bus_message_read(call, "s", &uri)) > 0) {
        // Each file becomes an event of its own; the call itself is answered below.
        const int queued = queue_open(common::path_of_uri(uri), nullptr, nullptr, error);
        if (queued < 0)
            return queued;
    }
    if (result < 0 || (result = sd_bus_message_exit_container(call)) < 0)
        return result;
    const std::string token = common::read_platform_data(call);
    front->bring_to_front(token.empty() ? nullptr : token.c_str());
    return sd_bus_reply_method_return(call, "");
}

static int method_activate_action(sd_bus_message *, void *, sd_bus_error *error) {
    return sd_bus_error_set(error, SD_BUS_ERROR_INVALID_ARGS, "there is no such action");
}

static const sd_bus_vtable desktop_table[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Activate", "a{sv}", "", method_activate, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Open", "asa{sv}", "", method_open_uris, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("ActivateAction", "sava{sv}", "", method_activate_action, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

// A shell with a window takes the name from one without, which has it back when the window's shell ends.
// Returns 0 when another shell keeps the name.
static int own_shell_name(sd_bus *bus) {
    if (has_window())
        return sd_bus_request_name(bus, common::shell_name, SD_BUS_NAME_REPLACE_EXISTING) >= 0;
    const int result =
        sd_bus_request_name(bus, common::shell_name, SD_BUS_NAME_ALLOW_REPLACEMENT | SD_BUS_NAME_QUEUE);
    if (result == 0)
        sd_bus_release_name(bus, common::shell_name);
    return result > 0;
}

int offer_shell_service(sd_bus *bus, int well_known) {
    sd_bus_add_object_vtable(bus, nullptr, common::shell_path, common::shell_interface, shell_table, nullptr);
    sd_bus_add_object_vtable(bus, nullptr, common::shell_path, common::desktop_interface, desktop_table,
                             nullptr);
    return !well_known || own_shell_name(bus);
}

} // namespace quillon
