#include "linux/events/plain_programs.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "common/argument_list.h"
#include "common/places.h"
#include "linux/events/peers.h"

namespace quillon {

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

// The environment of the command: no command that goes to a line follows it.
static std::vector<std::string> open_environment() {
    std::vector<std::string> variables;
    for (char **variable = environ; *variable; variable++)
        if (std::strncmp(*variable, "QUILLON_", 8) != 0)
            variables.emplace_back(*variable);
    variables.emplace_back("QUILLON_FOLLOWS=nothing");
    return variables;
}

OSErr open_in_application(const std::string &application, const char *document) {
    const std::string command = common::above_own_program(2) + "/Helpers/open";
    std::vector<std::string> words = {"open", "-a", application}, variables = open_environment();
    if (document)
        words.emplace_back(document);
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t actions;
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, static_cast<short>(POSIX_SPAWN_SETSIGMASK));
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, STDERR_FILENO, STDOUT_FILENO);
    pid_t pid = 0;
    const int failure =
        posix_spawn(&pid, command.c_str(), &actions, &attributes, common::argument_list(words).data(),
                    common::argument_list(variables).data());
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (failure != 0)
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
