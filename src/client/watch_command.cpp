#include "client/watch_command.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include "client/run_call.h"
#include "client/shell.h"
#include "client/shell_calls.h"
#include "client/start.h"
#include "common/document_watch.h"
#include "common/path_forms.h"
#include "common/session_bus.h"

namespace client {

namespace {

struct Watcher {
    Shell shell;
    common::DocumentWatch watch;
    std::string file;
    bool view = false;
    int signals = -1;
    int interrupt = 0;   // the signal that ends the command
    std::string console; // what the shell said during the run, without what the tool said
    bool in_transcript = false;
};

int on_console(sd_bus_message *message, void *data, sd_bus_error *) {
    auto &watcher = *static_cast<Watcher *>(data);
    const char *text = nullptr;
    if (!watcher.in_transcript && sd_bus_message_read_basic(message, 's', &text) > 0)
        watcher.console += text;
    return 0;
}

int on_transcript(sd_bus_message *message, void *data, sd_bus_error *) {
    int begins = 0;
    if (sd_bus_message_read(message, "b", &begins) > 0)
        static_cast<Watcher *>(data)->in_transcript = begins != 0;
    return 0;
}

// Waits for what comes next: at most MILLISECONDS, -1 for no limit.
void wait(Watcher &watcher, int milliseconds) {
    std::uint64_t bus_limit = UINT64_MAX;
    if (sd_bus_get_timeout(watcher.shell.bus, &bus_limit) > 0 && bus_limit == 0)
        milliseconds = 0;
    std::array<pollfd, 3> sources = {
        {{sd_bus_get_fd(watcher.shell.bus), static_cast<short>(sd_bus_get_events(watcher.shell.bus)), 0},
         {watcher.signals, POLLIN, 0},
         {watcher.watch.descriptor(), POLLIN, 0}}};
    if (poll(sources.data(), sources.size(), milliseconds) < 0 && errno != EINTR)
        watcher.interrupt = SIGTERM;
    signalfd_siginfo info;
    if (sources[1].revents && read(watcher.signals, &info, sizeof info) == sizeof info)
        watcher.interrupt = static_cast<int>(info.ssi_signo);
    if (sources[2].revents)
        watcher.watch.take_changes();
}

// True while the bus is there.
bool serve(Watcher &watcher) {
    int result = 0;
    while ((result = sd_bus_process(watcher.shell.bus, nullptr)) > 0) {
    }
    return result == 0;
}

// Has the document typeset and says how that went. False when there is no shell for it.
bool run(Watcher &watcher) {
    if (!common::name_has_owner(watcher.shell.bus, watcher.shell.name.c_str())) {
        leave_shell(watcher.shell);
        if (!reach_shell(watcher.shell))
            return false;
    }
    RunRequest request;
    request.command = watcher.file;
    request.folder = common::folder_above(watcher.file);
    request.document = request.summary = true;
    request.view = watcher.view;
    RunResult result;
    watcher.console.clear();
    watcher.in_transcript = false;
    watcher.watch.run_begins();
    bool cancelled = false,
         connected = send_run(watcher.shell.bus, watcher.shell.name.c_str(), request, &result) >= 0;
    while (connected && (connected = serve(watcher)) && !result.done) {
        wait(watcher, -1);
        if (watcher.interrupt && !cancelled)
            cancel_run(watcher.shell.bus, watcher.shell.name.c_str());
        cancelled = watcher.interrupt != 0;
    }
    if (watcher.interrupt)
        return true;
    if (result.ran) {
        list_problems(watcher.shell);
    } else {
        std::replace(watcher.console.begin(), watcher.console.end(), '\r', '\n');
        std::fputs(watcher.console.c_str(), stdout);
    }
    if (!result.summary.empty())
        std::puts(result.summary.c_str());
    std::fflush(stdout);
    std::string problem;
    const std::string main = result.document.empty() ? watcher.watch.main() : result.document;
    if (!watcher.watch.run_ended(main, &problem))
        std::fprintf(stderr, "quillon: %s: %s\n", main.c_str(), problem.c_str());
    else if (!watcher.watch.endless().empty())
        std::printf("%s has changed during each of the last runs, so no other run follows.\n",
                    watcher.watch.endless().c_str());
    return connected;
}

int go_on(Watcher &watcher) {
    bool runs = true;
    while (!watcher.interrupt) {
        if (runs && !run(watcher))
            return status_unavailable;
        if (watcher.watch.descriptor() < 0)
            return 1;
        runs = false;
        while (!watcher.interrupt && !runs) {
            const int milliseconds = watcher.watch.due_in();
            if (milliseconds == 0) {
                runs = watcher.watch.take_due();
            } else {
                wait(watcher, milliseconds);
                if (!serve(watcher))
                    return status_unavailable;
            }
        }
    }
    return 128 + watcher.interrupt;
}

} // namespace

int watch(sd_bus *bus, const std::string &file, bool view) {
    Watcher watcher;
    std::string problem;
    watcher.shell.bus = bus;
    watcher.file = file;
    watcher.view = view;
    if (!watcher.watch.begin(file, &problem)) {
        std::fprintf(stderr, "quillon: %s: %s\n", file.c_str(), problem.c_str());
        return 1;
    }
    if (!reach_shell(watcher.shell))
        return status_unavailable;
    sigset_t handled;
    sigemptyset(&handled);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&handled, number);
    sigprocmask(SIG_BLOCK, &handled, nullptr);
    watcher.signals = signalfd(-1, &handled, SFD_NONBLOCK | SFD_CLOEXEC);
    sd_bus_match_signal(bus, nullptr, nullptr, common::shell_path, common::shell_interface, "ConsoleText",
                        on_console, &watcher);
    sd_bus_match_signal(bus, nullptr, nullptr, common::shell_path, common::shell_interface,
                        "ConsoleTranscript", on_transcript, &watcher);
    const int status = go_on(watcher);
    leave_shell(watcher.shell);
    close(watcher.signals);
    return status;
}

} // namespace client
