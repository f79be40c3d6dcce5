#include "linux/events/plain_programs.h"

#include <sys/wait.h>

#include <cerrno>

#include "common/activation.h"
#include "common/places.h"
#include "common/spawn.h"
#include "linux/events/peers.h"
#include "linux/events/tokens.h"
#include "toolbox/processes.h"

namespace quillon {

OpenHints open_hints = {};
std::vector<PendingStart> pending_starts;

static std::uint32_t last_number = 0;
static pid_t asked_pid = 0;
static std::string asked_name;

ProcessSerialNumber add_pending_start(const std::string &path) {
    pending_starts.push_back({++last_number, path});
    return {psn_pending, last_number};
}

const PendingStart *find_pending_start(std::uint32_t number) {
    for (const PendingStart &start : pending_starts)
        if (start.number == number)
            return &start;
    return nullptr;
}

void forget_pending_start(std::uint32_t number) {
    std::erase_if(pending_starts, [number](const PendingStart &start) { return start.number == number; });
}

void start_pending_programs() {
    while (!pending_starts.empty()) {
        const std::string path = pending_starts.front().path;
        pending_starts.erase(pending_starts.begin());
        open_in_application(path, nullptr);
    }
}

std::vector<std::string> hint_variables(const char *follows) {
    std::vector<std::string> variables = {std::string("QUILLON_FOLLOWS=") + follows};
    if (open_hints.after_run)
        variables.emplace_back("QUILLON_AFTER_RUN=1");
    if (open_hints.shows_place)
        variables.push_back("QUILLON_SHOW_PLACE=" +
                            (open_hints.place_file && open_hints.place_line > 0
                                 ? std::to_string(open_hints.place_line) + " " + open_hints.place_file
                                 : ""));
    return variables;
}

OSErr open_in_application(const std::string &application, const char *document) {
    common::Spawn command;
    command.program = common::above_own_program(2) + "/Helpers/open";
    command.words = {"open", "-a", application};
    if (document)
        command.words.emplace_back(document);
    command.environment = common::own_environment();
    // No command that goes to a line follows.
    for (std::string &variable : hint_variables("nothing"))
        command.environment.push_back(std::move(variable));
    common::put_token(command.environment, fresh_token(application));
    pid_t pid = 0;
    if (common::spawn(command, &pid) != 0)
        return permErr;
    // The command ends as soon as the application is started.
    int status = 0;
    while (waitpid(pid, &status, 0) < 0)
        if (errno != EINTR)
            return permErr;
    return status == 0 ? static_cast<OSErr>(noErr) : static_cast<OSErr>(permErr);
}

void remember_asked_path(pid_t pid, const std::string &path) {
    asked_pid = pid;
    asked_name = path;
}

std::string asked_path(pid_t pid) {
    return pid == asked_pid ? asked_name : "";
}

} // namespace quillon
