// The shell that a command of this program talks to: the one that runs, or a private one.
#ifndef QUILLON_CLIENT_SHELL_H
#define QUILLON_CLIENT_SHELL_H

#include <string>
#include <sys/types.h>
#include <systemd/sd-bus.h>

namespace client {

struct Shell {
    sd_bus *bus = nullptr; // the caller's
    std::string name;      // on the bus; empty while there is no shell
    // Of a private shell: its process, and the socket that it lives by.
    pid_t process = -1;
    int life = -1;
};

// Finds the running shell, else starts a private one, which serves this program alone and ends with it.
// False, after a message, when that does not start.
bool reach_shell(Shell &shell);
// Lets a private shell go and waits until it has ended, at most five seconds; then it is killed. Does nothing
// to a shell that ran before.
void leave_shell(Shell &shell);

} // namespace client

#endif
