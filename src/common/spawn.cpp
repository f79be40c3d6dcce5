#include "common/spawn.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <pthread.h>
#include <semaphore.h>
#include <spawn.h>
#include <unistd.h>

#include "common/argument_list.h"
#include "common/places.h"
#include "common/process_tree.h"

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

// While a child has not become its program yet, this thread waits for it in the kernel, where no signal but
// SIGKILL reaches it. A child that somebody stops just then would hold it for good, so another thread looks
// after it meanwhile.
class Wakener {
  public:
    Wakener() : before_(children_of(getpid())) {
        sem_init(&started_, 0, 0);
        sigset_t all, own;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &own);
        runs_ = pthread_create(&thread_, nullptr, look_on, this) == 0;
        pthread_sigmask(SIG_SETMASK, &own, nullptr);
    }
    Wakener(const Wakener &) = delete;
    Wakener &operator=(const Wakener &) = delete;
    ~Wakener() {
        sem_post(&started_);
        if (runs_)
            pthread_join(thread_, nullptr);
        sem_destroy(&started_);
    }

  private:
    static void *look_on(void *own) {
        auto &wakener = *static_cast<Wakener *>(own);
        for (;;) {
            timespec end;
            clock_gettime(CLOCK_MONOTONIC, &end);
            end.tv_sec++;
            if (sem_clockwait(&wakener.started_, CLOCK_MONOTONIC, &end) == 0)
                return nullptr;
            if (errno == ETIMEDOUT)
                wakener.wake_new_children();
        }
    }
    void wake_new_children() const {
        for (const pid_t child : children_of(getpid()))
            if (std::find(before_.begin(), before_.end(), child) == before_.end() &&
                status_of_process(child).state == 'T')
                kill(child, SIGCONT);
    }

    std::vector<pid_t> before_;
    sem_t started_;
    pthread_t thread_ = {};
    bool runs_ = false;
};

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
    int error;
    {
        const Wakener wakener;
        error = posix_spawn(process, wanted.program.c_str(), &actions, &attributes,
                            argument_list(wanted.words).data(),
                            wanted.environment.empty() ? environ : argument_list(wanted.environment).data());
    }
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
