// The programs launched from here and the applications on the bus. Signatures are read when a name appears,
// so that a scan of the process list never asks anybody.
#include "linux/events/peers.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <list>

#include "common/bundle.h"
#include "common/places.h"
#include "common/run_notes.h"
#include "common/session_bus.h"
#include "linux/events/ae_receive.h"
#include "linux/events/event_sources.h"
#include "linux/events/process_table.h"
#include "toolbox/codes.h"
#include "toolbox/events.h"
#include "toolbox/files.h"

namespace quillon {

std::list<Launched> launched_programs;
std::list<Peer> bus_peers;
int tool_waits = 0;

static constexpr std::uint32_t name_patience = 120; // ticks

Launched *find_launched(pid_t pid) {
    for (Launched &program : launched_programs)
        if (program.pid == pid)
            return &program;
    return nullptr;
}

Launched *find_launched_by_owner(const char *owner) {
    for (Launched &program : launched_programs)
        if (!program.owner.empty() && program.owner == owner)
            return &program;
    return nullptr;
}

Peer *find_peer(pid_t pid) {
    for (Peer &peer : bus_peers)
        if (peer.pid == pid)
            return &peer;
    return nullptr;
}

bool is_listed(const Launched &program) {
    if (!program.exited)
        return true;
    // The bus delivers all that the program sent before it tells that its name has gone. A child process that
    // keeps the connection open keeps the name too, so the wait for that news has a limit.
    if (!program.owner.empty() && !program.owner_gone && HostBus() &&
        TickCount() - program.ended_at < name_patience)
        return true;
    return tool_waits == 0 && !program.owner.empty() && events_wait_from(program.owner.c_str());
}

void forget_ended_programs() {
    if (tool_waits == 0)
        std::erase_if(launched_programs, [](const Launched &program) { return !is_listed(program); });
}

std::string bus_owner(std::uint32_t kind, pid_t pid) {
    if (kind == psn_launched) {
        const Launched *const program = find_launched(pid);
        return program && !program->owner_gone ? program->owner : "";
    }
    const Peer *const peer = find_peer(pid);
    return peer ? peer->owner : "";
}

static int on_properties(sd_bus_message *reply, void *context, sd_bus_error *) {
    Peer *const peer = find_peer(static_cast<pid_t>(reinterpret_cast<std::intptr_t>(context)));
    if (!peer || sd_bus_message_is_method_error(reply, nullptr) ||
        sd_bus_message_enter_container(reply, 'a', "{sv}") < 0)
        return 0;
    while (sd_bus_message_enter_container(reply, 'e', "sv") > 0) {
        const char *property = nullptr, *value = nullptr;
        sd_bus_message_read(reply, "s", &property);
        if (sd_bus_message_read(reply, "v", "s", &value) < 0)
            return 0;
        if (std::strcmp(property, "Signature") == 0)
            peer->known = parse_code(value, &peer->signature);
        else if (std::strcmp(property, "Path") == 0)
            peer->path = value;
        sd_bus_message_exit_container(reply);
    }
    WakeUp();
    return 0;
}

// True for a program that another shell launched. It serves that one alone.
static bool serves_another_shell(pid_t pid) {
    constexpr std::string_view name = "QUILLON_SHELL_PID=";
    const std::string variables = '\0' + common::variables_of_process(pid);
    const std::size_t found = variables.find('\0' + std::string(name));
    return found != std::string::npos && std::atoi(variables.c_str() + found + 1 + name.size()) != getpid();
}

struct Claim {
    pid_t pid;
    std::string owner;
};

// A name only claims a process id; the bus tells whether the owner of the name is that process.
static int on_owner_process(sd_bus_message *reply, void *context, sd_bus_error *) {
    Claim *const claim = static_cast<Claim *>(context);
    std::uint32_t pid = 0;
    if (!sd_bus_message_is_method_error(reply, nullptr) && sd_bus_message_read(reply, "u", &pid) >= 0 &&
        static_cast<pid_t>(pid) == claim->pid) {
        if (Launched *const program = find_launched(claim->pid)) {
            program->owner = claim->owner;
        } else if (!find_peer(claim->pid) && claim->pid != getpid() && !serves_another_shell(claim->pid)) {
            Peer peer;
            peer.pid = claim->pid;
            peer.owner = claim->owner;
            bus_peers.push_back(peer);
            sd_bus_call_method_async(HostBus(), nullptr, claim->owner.c_str(), common::application_path,
                                     common::properties_interface, "GetAll", on_properties,
                                     reinterpret_cast<void *>(static_cast<std::intptr_t>(claim->pid)), "s",
                                     common::application_interface);
        }
    }
    delete claim;
    WakeUp();
    return 0;
}

static void name_appeared(pid_t pid, const char *owner) {
    Claim *const claim = new Claim{pid, owner};
    if (sd_bus_call_method_async(HostBus(), nullptr, common::bus_name, common::bus_path,
                                 common::bus_interface, "GetConnectionUnixProcessID", on_owner_process, claim,
                                 "s", owner) < 0)
        delete claim;
}

static void name_vanished(pid_t pid, const char *owner) {
    if (Launched *const program = find_launched(pid))
        if (program->owner == owner)
            program->owner_gone = true;
    std::erase_if(bus_peers, [&](const Peer &peer) { return peer.pid == pid && peer.owner == owner; });
    WakeUp();
}

static int on_name_owner_changed(sd_bus_message *signal, void *, sd_bus_error *) {
    const char *name = nullptr, *old_owner = nullptr, *new_owner = nullptr;
    pid_t pid = 0;
    if (sd_bus_message_read(signal, "sss", &name, &old_owner, &new_owner) < 0 ||
        !common::process_of_bus_name(name, &pid))
        return 0;
    if (*old_owner)
        name_vanished(pid, old_owner);
    if (*new_owner)
        name_appeared(pid, new_owner);
    return 0;
}

static int on_owner(sd_bus_message *reply, void *context, sd_bus_error *) {
    const char *owner = nullptr;
    if (!sd_bus_message_is_method_error(reply, nullptr) && sd_bus_message_read(reply, "s", &owner) >= 0)
        name_appeared(static_cast<pid_t>(reinterpret_cast<std::intptr_t>(context)), owner);
    return 0;
}

static int on_names(sd_bus_message *reply, void *, sd_bus_error *) {
    if (sd_bus_message_is_method_error(reply, nullptr) || sd_bus_message_enter_container(reply, 'a', "s") < 0)
        return 0;
    const char *name = nullptr;
    pid_t pid = 0;
    while (sd_bus_message_read(reply, "s", &name) > 0)
        if (common::process_of_bus_name(name, &pid) && pid != getpid())
            sd_bus_call_method_async(HostBus(), nullptr, common::bus_name, common::bus_path,
                                     common::bus_interface, "GetNameOwner", on_owner,
                                     reinterpret_cast<void *>(static_cast<std::intptr_t>(pid)), "s", name);
    return 0;
}

void watch_bus_names(sd_bus *bus) {
    sd_bus_add_match_async(bus, nullptr,
                           "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
                           "member='NameOwnerChanged',arg0namespace='org.quillon.App'",
                           on_name_owner_changed, nullptr, nullptr);
    sd_bus_call_method_async(bus, nullptr, common::bus_name, common::bus_path, common::bus_interface,
                             "ListNames", on_names, nullptr, nullptr);
}

static int on_exit(sd_event_source *source, int, std::uint32_t, void *context) {
    Launched *const program = static_cast<Launched *>(context);
    siginfo_t info = {};
    // The descriptor becomes readable when the process has ended; waitid removes it from the host's table.
    waitid(P_PIDFD, static_cast<id_t>(program->descriptor), &info, WEXITED);
    // A tool host that was killed may have left processes of its run: its guard may be dead too.
    if (info.si_code != CLD_EXITED)
        common::end_left_runs();
    sd_event_source_unref(source);
    close(program->descriptor);
    program->source = nullptr;
    program->descriptor = -1;
    program->exited = true;
    program->ended_at = TickCount();
    WakeUp();
    return 0;
}

void add_launched(const Launched &program) {
    launched_programs.push_back(program);
    Launched &entry = launched_programs.back();
    if (entry.descriptor < 0 ||
        sd_event_add_io(HostLoop(), &entry.source, entry.descriptor, EPOLLIN, on_exit, &entry) < 0)
        entry.exited = true;
    else
        sd_event_source_set_priority(entry.source, SD_EVENT_PRIORITY_NORMAL + 10); // after the bus
}

OSType signature_of(const std::string &path) {
    OSType signature = 0;
    if (common::is_bundle_path(path))
        return parse_code(common::signature_of_bundle(path), &signature) ? signature : 0;
    FSSpec spec;
    FInfo info;
    if (FSPathMakeSpec(path.c_str(), &spec) != noErr || FSpGetFInfo(&spec, &info) != noErr)
        return 0;
    return info.fdCreator;
}

} // namespace quillon
