#include "client/exec_command.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include "client/live_output.h"
#include "client/run_call.h"
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
    LiveOutput output;
    RunResult result;
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

void loop(Session &session, int signals) {
    int interrupts = 0;
    while (!session.result.done) {
        const int result = sd_bus_process(session.bus, nullptr);
        if (result < 0)
            return;
        if (result > 0 || session.result.done)
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
                cancel_run(session.bus, session.shell);
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
    RunRequest run;
    run.command = command_line(request.words, common::space_byte());
    run.folder = request.folder;
    run.view = request.view;
    run.edit = request.edit;
    run.answer = request.follow;
    // Whoever takes the output up does not want one line more on the standard error.
    run.summary = request.follow || isatty(STDOUT_FILENO);
    sigprocmask(SIG_BLOCK, &handled, nullptr);
    const int signals = signalfd(-1, &handled, SFD_NONBLOCK | SFD_CLOEXEC);
    listen(session);
    if (send_run(bus, session.shell, run, &session.result) >= 0)
        loop(session, signals);
    // Console text may have come together with the answer.
    while (sd_bus_process(bus, nullptr) > 0) {
    }
    leave_shell(shell);
    close(signals);
    for (const std::string *line : {&session.result.first_error, &session.result.summary})
        if (!line->empty())
            std::fprintf(stderr, "%s\n", line->c_str());
    return session.result.status;
}

} // namespace client
