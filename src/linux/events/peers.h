// The programs that the shell knows: those it launched, and the applications on the bus.
#ifndef QUILLON_LINUX_EVENTS_PEERS_H
#define QUILLON_LINUX_EVENTS_PEERS_H

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <sys/types.h>

#include <string>

#include "toolbox/types.h"

namespace quillon {

// High words of process serial numbers; the low word is the process id.
enum : std::uint32_t { psn_launched = 1, psn_bus = 2, psn_plain = 3 };

// A program started from here: known from the moment of launch, by its process descriptor.
struct Launched {
    pid_t pid = 0;
    int descriptor = -1;
    sd_event_source *source = nullptr;
    bool is_bundle = false;
    bool exited = false;
    std::uint32_t ended_at = 0; // ticks
    std::string path;           // POSIX path of the bundle or program
    OSType signature = 0;
    std::string owner; // its unique name on the bus, once that is known to be its process
    bool owner_gone = false;
};

// An application on the bus that was not launched from here. Its properties are cached as its name comes.
struct Peer {
    pid_t pid = 0;
    std::string owner;
    std::string path;
    OSType signature = 0;
    bool known = false;
};

Launched *find_launched(pid_t pid);
Launched *find_launched_by_owner(const char *owner);
Peer *find_peer(pid_t pid);
// Whether the process list still holds it: until its events have been taken, or, in the wait for a tool,
// until it has gone.
bool is_listed(const Launched &program);
// A send is waiting for a tool.
extern int tool_waits;
// The unique name to address, empty while it is not known (a program that has just been launched).
std::string bus_owner(std::uint32_t kind, pid_t pid);
// Forgets a launched program that has ended and whose events have been taken.
void forget_ended_programs();
// The names org.quillon.App.p<PID> that come and go.
void watch_bus_names(sd_bus *bus);
void add_launched(const Launched &program);
// From POSIX path to signature: of a bundle, or of a plain program; 0 when there is none.
OSType signature_of(const std::string &path);

} // namespace quillon

#endif
