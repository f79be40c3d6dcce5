#include "client/exec_command.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include "client/live_output.h"
#include "client/shell.h"
#include "client/start.h"
#include "common/preferences.h"
#include "common/session_bus.h"

namespace client {

using common::shell_interface;
using common::shell_path;

namespace {

struct Session {
    sd_bus *bus = nullptr;
    const char *shell = nullptr; // its name on the bus
    bool follow = false;
    bool done = false;
    int status = status_unavailable;
    LiveOutput output;
    std::string first_error; // a line for the standard error
    std::string summary;     // a line that sums the run up
    bool sums_up = false;
    std::string tool; // the unique bus name of the tool that runs
    bool tool_waits = false;
    bool input_ended = false;
};

void show(std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(STDOUT_FILENO, text.data(), text.size());
        if (count < 0 && errno != EINTR)
            return;
        text.remove_prefix(count > 0 ? static_cast<std::size_t>(count) : 0);
    }
}

int on_console(sd_bus_message *message, void *data, sd_bus_error *) {
    auto &session = *static_cast<Session *>(data);
    const char *text = nullptr;
    if (sd_bus_message_read_basic(message, 's', &text) > 0)
        show(session.output.console_text(text));
    return 0;
}

int on_transcript(sd_bus_message *message, void *data, sd_bus_error *) {
    int begins = 0;
    if (sd_bus_message_read(message, "b", &begins) > 0)
        static_cast<Session *>(data)->output.transcript(begins != 0);
    return 0;
}

int on_output(sd_bus_message *message, void *data, sd_bus_error *) {
    auto &session = *static_cast<Session *>(data);
    const void *bytes = nullptr;
    std::size_t size = 0;
    session.tool = sd_bus_message_get_sender(message);
    if (sd_bus_message_read_array(message, 'y', &bytes, &size) > 0)
        show(session.output.tool_text({static_cast<const char *>(bytes), size}));
    return 0;
}

int on_waiting(sd_bus_message *message, void *data, sd_bus_error *) {
    auto &session = *static_cast<Session *>(data);
    const char *interface = nullptr;
    if (sd_bus_message_read_basic(message, 's', &interface) <= 0 ||
        std::strcmp(interface, common::tool_interface) != 0)
        return 0;
    if (sd_bus_message_enter_container(message, 'a', "{sv}") <= 0)
        return 0;
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
        const char *name = nullptr;
        int waits = 0;
        sd_bus_message_read_basic(message, 's', &name);
        if (std::strcmp(name, "Waiting") == 0 && sd_bus_message_read(message, "v", "b", &waits) > 0) {
            session.tool = sd_bus_message_get_sender(message);
            session.tool_waits = waits != 0;
        } else {
            sd_bus_message_skip(message, "v");
        }
        sd_bus_message_exit_container(message);
    }
    return 0;
}

// Sets the line "file:line: message" of the first error that the reply tells, and the line that sums the run
// up. Leaves what it does not tell.
void read_result(sd_bus_message *reply, Session &session) {
    std::string file;
    const char *message = "";
    int line = 0;
    if (sd_bus_message_enter_container(reply, 'a', "{sv}") <= 0)
        return;
    while (sd_bus_message_enter_container(reply, 'e', "sv") > 0) {
        const char *name = "";
        const void *bytes = nullptr;
        std::size_t size = 0;
        sd_bus_message_read_basic(reply, 's', &name);
        const std::string_view key = name;
        if (key == "file" && sd_bus_message_enter_container(reply, 'v', "ay") > 0) {
            if (sd_bus_message_read_array(reply, 'y', &bytes, &size) > 0)
                file.assign(static_cast<const char *>(bytes), size);
            sd_bus_message_exit_container(reply);
        } else if (key == "line") {
            sd_bus_message_read(reply, "v", "i", &line);
        } else if (key == "message") {
            sd_bus_message_read(reply, "v", "s", &message);
        } else if (key == "summary") {
            const char *summary = "";
            sd_bus_message_read(reply, "v", "s", &summary);
            session.summary = std::string(summary) + "\n";
        } else {
            sd_bus_message_skip(reply, "v");
        }
        sd_bus_message_exit_container(reply);
    }
    if (!file.empty())
        session.first_error = file + ":" + std::to_string(line) + ": " + message + "\n";
}

int on_done(sd_bus_message *reply, void *data, sd_bus_error *) {
    auto &session = *static_cast<Session *>(data);
    session.done = true;
    const sd_bus_error *const error = sd_bus_message_get_error(reply);
    if (!error) {
        int status = 1;
        sd_bus_message_read(reply, "i", &status);
        session.status = status & 255;
        if (status != 0 && session.status == 0)
            session.status = 1;
        read_result(reply, session);
        return 0;
    }
    const std::string_view name = error->name;
    session.status = name.ends_with(".Cancelled")                                     ? 128 + SIGINT
                     : name.ends_with(".NotRun") || name.ends_with(".UnknownCommand") ? 127
                     : name.ends_with(".Busy")                                        ? 75
                     : name == SD_BUS_ERROR_INVALID_ARGS                              ? 64
                                                                                      : status_unavailable;
    if (session.status == status_unavailable)
        std::fprintf(stderr, "quillon: the shell has gone\n");
    else
        std::fprintf(stderr, "quillon: %s\n",
                     error->message && *error->message ? error->message : error->name);
    return 0;
}

// Reads one line from the standard input and sends it to the tool that waits. At the end of the input the
// tool gets an end of file.
void pass_answer(Session &session) {
    char block[4096];
    const ssize_t count = read(STDIN_FILENO, block, 1);
    std::string line;
    if (count <= 0) {
        session.input_ended = true;
        line = "\4";
    } else {
        line = block[0];
        while (line.back() != '\n' && line.size() < 4000 && read(STDIN_FILENO, block, 1) == 1)
            line += block[0];
        if (isatty(STDIN_FILENO))
            session.output.expect_echo(line);
    }
    session.tool_waits = false;
    sd_bus_message *call = nullptr;
    int result = sd_bus_message_new_method_call(session.bus, &call, session.tool.c_str(),
                                                common::application_path, common::tool_interface, "Answer");
    if (result >= 0)
        result = sd_bus_message_append_array(call, 'y', line.data(), line.size());
    common::send_without_reply(session.bus, call, result);
}

int send_exec(Session &session, const ExecRequest &request) {
    const std::string line = command_line(request.words, common::space_byte());
    sd_bus_message *call = nullptr;
    int result =
        sd_bus_message_new_method_call(session.bus, &call, session.shell, shell_path, shell_interface, "Run");
    for (const std::string *part : {&line, &request.folder})
        if (result >= 0)
            result = sd_bus_message_append_array(call, 'y', part->data(), part->size());
    if (result >= 0)
        result = sd_bus_message_append(call, "a{sv}", session.sums_up ? 5 : 4, "follow", "b", 1, "view", "b",
                                       request.view ? 1 : 0, "edit", "b", request.edit ? 1 : 0, "answer", "b",
                                       request.follow ? 1 : 0, "summary", "b", 1);
    if (result >= 0)
        result = sd_bus_call_async(session.bus, nullptr, call, on_done, &session, UINT64_MAX);
    sd_bus_message_unref(call);
    return result;
}

void listen(Session &session) {
    sd_bus_match_signal(session.bus, nullptr, session.shell, shell_path, shell_interface, "ConsoleText",
                        on_console, &session);
    sd_bus_match_signal(session.bus, nullptr, session.shell, shell_path, shell_interface, "ConsoleTranscript",
                        on_transcript, &session);
    if (session.follow) {
        sd_bus_match_signal(session.bus, nullptr, nullptr, common::application_path, common::tool_interface,
                            "Output", on_output, &session);
        sd_bus_match_signal(session.bus, nullptr, nullptr, common::application_path,
                            common::properties_interface, "PropertiesChanged", on_waiting, &session);
    }
}

void cancel(const Session &session) {
    sd_bus_message *call = nullptr;
    const int result = sd_bus_message_new_method_call(session.bus, &call, session.shell, shell_path,
                                                      shell_interface, "Cancel");
    common::send_without_reply(session.bus, call, result);
}

void loop(Session &session, int signals) {
    int interrupts = 0;
    while (!session.done) {
        const int result = sd_bus_process(session.bus, nullptr);
        if (result < 0)
            return;
        if (result > 0 || session.done)
            continue;
        pollfd sources[3] = {
            {sd_bus_get_fd(session.bus), static_cast<short>(sd_bus_get_events(session.bus)), 0},
            {signals, POLLIN, 0},
            {session.tool_waits && !session.input_ended ? STDIN_FILENO : -1, POLLIN, 0}};
        if (poll(sources, 3, -1) < 0 && errno != EINTR)
            return;
        if (sources[1].revents) {
            signalfd_siginfo info;
            if (read(signals, &info, sizeof info) > 0 && ++interrupts <= 2)
                cancel(session);
            else
                return;
        }
        if (sources[2].revents)
            pass_answer(session);
    }
}

} // namespace

int exec_command(sd_bus *bus, const ExecRequest &request) {
    sigset_t handled;
    sigemptyset(&handled);
    sigaddset(&handled, SIGINT);
    sigaddset(&handled, SIGTERM);
    sigaddset(&handled, SIGHUP);
    Shell shell;
    shell.bus = bus;
    if (!reach_shell(shell))
        return status_unavailable;
    Session session;
    session.bus = bus;
    session.shell = shell.name.c_str();
    session.follow = request.follow;
    // Whoever takes the output up does not want one line more on the standard error.
    session.sums_up = request.follow || isatty(STDOUT_FILENO);
    sigprocmask(SIG_BLOCK, &handled, nullptr);
    const int signals = signalfd(-1, &handled, SFD_NONBLOCK | SFD_CLOEXEC);
    listen(session);
    if (send_exec(session, request) >= 0)
        loop(session, signals);
    // Console text may have come together with the answer.
    while (sd_bus_process(bus, nullptr) > 0) {
    }
    leave_shell(shell);
    close(signals);
    std::fputs(session.first_error.c_str(), stderr);
    std::fputs(session.summary.c_str(), stderr);
    return session.status;
}

} // namespace client
