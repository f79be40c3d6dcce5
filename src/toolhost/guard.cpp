#include "toolhost/guard.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "common/argument_list.h"
#include "common/descriptors.h"
#include "common/process_tree.h"

namespace toolhost {

namespace {

void send_packet(int channel, GuardNews news, int value) {
    const GuardPacket packet{news, value};
    while (send(channel, &packet, sizeof packet, MSG_NOSIGNAL) < 0 && errno == EINTR) {
    }
}

// Turns this process into the program. It reports an error to FAILURE, a pipe that closes when the program
// runs.
[[noreturn]] void become_program(const Launch &launch, const std::vector<char *> &words,
                                 const std::vector<char *> &environment, int failure, pid_t parent) {
    setsid();
    ioctl(launch.terminal, TIOCSCTTY, 0);
    for (int i = 0; i < 3; i++)
        dup2(i > 0 && launch.output >= 0 ? launch.output : launch.terminal, i);
    if (launch.record >= 0)
        dup2(launch.record, edit_descriptor);
    for (int number = 1; number < NSIG; number++)
        signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(127);
    if (chdir(launch.folder.c_str()) == 0)
        execve(launch.program.c_str(), words.data(), environment.data());
    const int error = errno;
    if (write(failure, &error, sizeof error) < 0)
        _exit(126);
    _exit(127);
}

// Waits until the program ends (true) or the host is gone (false). Meanwhile it passes the host's signals on.
bool watch(int channel, int children, pid_t program, int *status) {
    pollfd sources[2] = {{channel, POLLIN, 0}, {children, POLLIN, 0}};
    for (;;) {
        if (poll(sources, 2, -1) < 0)
            continue;
        if (sources[1].revents) {
            signalfd_siginfo info;
            while (read(children, &info, sizeof info) > 0) {
            }
            int its_status = 0;
            bool ended = false;
            for (pid_t child; (child = waitpid(-1, &its_status, WNOHANG)) > 0;)
                if (child == program) {
                    *status = its_status;
                    ended = true;
                }
            if (ended)
                return true;
        }
        if (sources[0].revents) {
            int number = 0;
            const ssize_t count = recv(channel, &number, sizeof number, 0);
            if (count <= 0)
                return false;
            if (number == SIGKILL) {
                bool reaped = false;
                kill_descendants(program, status, &reaped);
                if (reaped)
                    return true;
            } else {
                kill(-program, number);
            }
        }
    }
}

// Gives the output of the run before back, and takes the recorder's list away, unless the host says that it
// has seen to that itself. A host that dies takes the terminal of PROGRAM along, so the end of the program
// may be known before that of the host.
void settle(int channel, const Launch &launch, pid_t program) {
    int word = -1;
    while ((!launch.kept.path.empty() || !launch.list.path.empty()) && word != output_is_settled) {
        const ssize_t count = recv(channel, &word, sizeof word, 0);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0) {
            give_back(launch.kept);
            take_away(launch.list, program);
            return;
        }
    }
}

int moved_up(int descriptor) {
    return descriptor < 0 ? -1 : fcntl(descriptor, F_DUPFD_CLOEXEC, 20);
}

char *title = nullptr;
std::size_t title_room = 0;

void write_title() {
    static const char text[] = "quillon-guard";
    prctl(PR_SET_NAME, text);
    if (title_room > sizeof text) {
        std::memset(title, 0, title_room);
        std::memcpy(title, text, sizeof text);
    }
}

// Starts the program of MINE and closes the descriptors that are its own. Returns its process id once it
// runs. ERROR receives 0, or why it did not start.
pid_t start_program(Launch &mine, int *error) {
    int failure[2];
    if (pipe2(failure, O_CLOEXEC) != 0) {
        *error = errno;
        return -1;
    }
    const int failure_in = moved_up(failure[0]);
    const int failure_out = moved_up(failure[1]);
    close(failure[0]);
    close(failure[1]);
    const std::vector<char *> words = common::argument_list(mine.words);
    const std::vector<char *> environment = common::argument_list(mine.environment);
    const pid_t self = getpid();
    const pid_t program = fork();
    if (program == 0)
        become_program(mine, words, environment, failure_out, self);
    *error = program < 0 ? errno : 0;
    close(failure_out);
    for (const int own : {mine.terminal, mine.output, mine.record})
        if (own >= 0)
            close(own);
    int reason = 0;
    if (program > 0 && read(failure_in, &reason, sizeof reason) > 0)
        *error = reason;
    close(failure_in);
    return program;
}

[[noreturn]] void guard(const Launch &launch, int channel) {
    write_title();
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    // A guard that somebody has stopped does its work all the same once the host is dead.
    prctl(PR_SET_PDEATHSIG, SIGCONT);
    setpgid(0, 0);
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_SETMASK, &all, nullptr);

    // Only these of the host's files stay open, at numbers above those that the program gets.
    Launch mine = launch;
    const int link = moved_up(channel);
    mine.terminal = moved_up(launch.terminal);
    mine.output = moved_up(launch.output);
    mine.record = moved_up(launch.record);
    sigset_t child_signal;
    sigemptyset(&child_signal);
    sigaddset(&child_signal, SIGCHLD);
    const int children = moved_up(signalfd(-1, &child_signal, SFD_NONBLOCK | SFD_CLOEXEC));
    // The guard carries the mark of the run too: who ends what a dead host has left waits for its guard.
    if (mine.record >= 0)
        dup3(mine.record, common::run_descriptor, O_CLOEXEC);
    common::close_others({link, mine.terminal, mine.output, mine.record, children, common::run_descriptor});

    int error = 0;
    const pid_t program = start_program(mine, &error);
    if (error != 0) {
        send_packet(link, GuardNews::not_started, error);
        settle(link, mine, 0);
        _exit(0);
    }
    send_packet(link, GuardNews::started, program);
    int status = SIGKILL;
    const bool ended = watch(link, children, program, &status);
    kill_descendants(0, nullptr, nullptr);
    if (ended)
        send_packet(link, GuardNews::ended, status);
    settle(link, mine, program);
    _exit(0);
}

} // namespace

void kill_descendants(pid_t watched, int *status, bool *reaped) {
    for (;;) {
        common::kill_below(getpid());
        int its_status = 0;
        pid_t child;
        // A process that cannot die yet, because it waits for a disk, is looked at again a moment later.
        while ((child = waitpid(-1, &its_status, WNOHANG)) > 0)
            if (child == watched && status) {
                *status = its_status;
                *reaped = true;
            }
        if (child < 0 && errno == ECHILD)
            return;
        const timespec moment = {0, 500000};
        nanosleep(&moment, nullptr);
    }
}

pid_t start_guard(const Launch &launch, int *channel) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        return -1;
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        guard(launch, ends[1]);
    }
    close(ends[1]);
    if (child < 0) {
        close(ends[0]);
        return -1;
    }
    *channel = ends[0];
    return child;
}

void keep_arguments(int count, char **words) {
    if (count < 1)
        return;
    title = words[0];
    // The words of main lie one after the other in memory.
    title_room = static_cast<std::size_t>(words[count - 1] - title) + std::strlen(words[count - 1]);
}

} // namespace toolhost
