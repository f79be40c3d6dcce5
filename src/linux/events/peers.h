// The programs that the shell knows: those it launched, and the applications on the bus.
#ifndef QUILLON_LINUX_EVENTS_PEERS_H
#define QUILLON_LINUX_EVENTS_PEERS_H

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <sys/types.h>

#include <string>

#include "toolbox/types.h"

namespace quillon {

// High words of process serial numbers; the low word is the process id, or the number of an application that
// is not started yet.
enum : std::uint32_t { psn_launched = 1, psn_bus = 2, psn_plain = 3, psn_pending = 4 };

// A bundle started from here, known from its launch by its process descriptor.
struct Launched {
    pid_t pid = 0;
    int descriptor = -1;
    sd_event_source *source = nullptr;
    bool exited = false;
    std::uint32_t ended_at = 0; // ticks
    std::string path;           // POSIX path of the bundle
    OSType signature = 0;
    std::string owner; // its unique bus name; empty until the bus has confirmed the process id
    bool owner_gone = false;
};

// An application on the bus that was not launched from here. Its properties are read when its name appears.
struct Peer {
    pid_t pid = 0;
    std::string owner;
    std::string path;
    OSType signature = 0;
    bool known = false; // true once the signature was read
};

// The program or application with that process id or unique bus name; null when there is none. The entry
// belongs to the list and holds until events are served.
Launched *find_launched(pid_t pid);
Launched *find_launched_by_owner(const char *owner);
Peer *find_peer(pid_t pid);
// True while the process list shows the program: as long as it runs, and after its end until its events were
// taken; in a wait for a tool only until its name has left the bus.
bool is_listed(const Launched &program);
// The number of sends that wait for the reply of a tool.
extern int tool_waits;
// The unique bus name of a process; empty while it is not known, as for a program that was only just
// launched. KIND is the high word of its serial number.
std::string bus_owner(std::uint32_t kind, pid_t pid);
// Forgets the launched programs that the process list no longer shows; does nothing in a wait for a tool.
void forget_ended_programs();
// Begins to watch the names org.quillon.App.p<PID> that appear on the bus and leave it.
void watch_bus_names(sd_bus *bus);
// Adds a program to the list and watches for its end.
void add_launched(const Launched &program);
// The signature of the bundle or the creator of the plain program at the POSIX path; 0 when there is none.
OSType signature_of(const std::string &path);

} // namespace quillon

#endif
