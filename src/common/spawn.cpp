#include "common/spawn.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include "common/argument_list.h"
#include "common/places.h"

namespace common {

namespace {

void set_attributes(posix_spawnattr_t *attributes, Place place) {
    sigset_t none, defaults;
    sigemptyset(&none);
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigmask(attributes, &none);
    posix_spawnattr_setsigdefault(attributes, &defaults);
    posix_spawnattr_setpgroup(attributes, 0);
    const int where = place == Place::own_group     ? POSIX_SPAWN_SETPGROUP
                      : place == Place::own_session ? POSIX_SPAWN_SETSID
                                                    : 0;
    posix_spawnattr_setflags(attributes,
                             static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | where));
}

void set_output(posix_spawn_file_actions_t *actions, int from, int standard) {
    if (from == nowhere)
        posix_spawn_file_actions_addopen(actions, standard, "/dev/null", O_WRONLY, 0);
    else if (from != standard)
        posix_spawn_file_actions_adddup2(actions, from, standard);
}

} // namespace

int spawn(Spawn wanted, pid_t *process) {
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t actions;
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_init(&actions);
    set_attributes(&attributes, wanted.place);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    // The output may go where the error went, so it comes first.
    set_output(&actions, wanted.output, STDOUT_FILENO);
    set_output(&actions, wanted.error, STDERR_FILENO);
    if (wanted.channel >= 0)
        posix_spawn_file_actions_adddup2(&actions, wanted.channel, channel_descriptor);
    const int error = posix_spawn(
        process, wanted.program.c_str(), &actions, &attributes, argument_list(wanted.words).data(),
        wanted.environment.empty() ? environ : argument_list(wanted.environment).data());
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    return error;
}

std::vector<std::string> plain_environment() {
    std::vector<std::string> variables;
    for (char **variable = environ; *variable; variable++)
        if (std::strncmp(*variable, "QUILLON_", 8) != 0)
            variables.emplace_back(*variable);
    return variables;
}

std::vector<std::string> own_environment() {
    std::vector<std::string> variables = plain_environment();
    for (const char *const name : {private_preferences_variable, own_bus_variable})
        if (const char *const value = std::getenv(name))
            variables.push_back(std::string(name) + "=" + value);
    return variables;
}

} // namespace common
