#include "client/shell.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "client/start.h"
#include "common/session_bus.h"
#include "common/spawn.h"

namespace client {

namespace {

constexpr int end_milliseconds = 5000;

// Reads the line that a private shell says at its start. Empty when the shell ends before.
std::string read_line(int socket) {
    std::string line;
    char c = 0;
    ssize_t count;
    while ((count = read(socket, &c, 1)) != 0 && c != '\n')
        if (count > 0)
            line += c;
        else if (errno != EINTR)
            break;
    return line;
}

} // namespace

bool reach_shell(Shell &shell) {
    // By its own name, since the well-known one can pass on to another shell during a command.
    shell.name = common::owner_of_name(shell.bus, common::shell_name);
    if (!shell.name.empty())
        return true;
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        std::perror("quillon");
        return false;
    }
    const std::string program = shell_program();
    common::Spawn wanted;
    wanted.program = program;
    wanted.words = {program, "--private"};
    // Its console's text comes over the bus. In a group of its own it gets no interrupt that is typed at the
    // terminal; this program cancels the run.
    wanted.place = common::Place::own_group;
    wanted.output = common::nowhere;
    wanted.channel = ends[1];
    const int error = common::spawn(wanted, &shell.process);
    close(ends[1]);
    shell.life = ends[0];
    if (error != 0) {
        std::fprintf(stderr, "quillon: I can't start %s: %s\n", program.c_str(), std::strerror(error));
        shell.process = -1;
    } else if ((shell.name = read_line(shell.life)).empty()) {
        std::fprintf(stderr, "quillon: the shell did not start\n");
    }
    if (shell.name.empty())
        leave_shell(shell);
    return !shell.name.empty();
}

void leave_shell(Shell &shell) {
    if (shell.life >= 0)
        close(shell.life);
    shell.life = -1;
    if (shell.process <= 0)
        return;
    pollfd end = {static_cast<int>(syscall(SYS_pidfd_open, shell.process, 0)), POLLIN, 0};
    if (end.fd < 0 || poll(&end, 1, end_milliseconds) == 0)
        kill(shell.process, SIGKILL);
    if (end.fd >= 0)
        close(end.fd);
    waitpid(shell.process, nullptr, 0);
    shell.process = -1;
}

} // namespace client
