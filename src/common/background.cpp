#include "common/background.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include "common/argument_list.h"

namespace common {

void start_in_background(const std::string &programs, std::vector<std::string> words) {
    if (std::getenv("QUILLON_OWN_BUS"))
        return;
    const std::string program = programs + "/quillon-background";
    words.insert(words.begin(), program);
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t actions;
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSID));
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDWR, 0);
    for (const int standard : {STDOUT_FILENO, STDERR_FILENO})
        posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, standard);
    pid_t pid = 0;
    posix_spawn(&pid, program.c_str(), &actions, &attributes, argument_list(words).data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
}

} // namespace common
