// The process list: programs launched from here, applications on the bus, and the user's other processes.
#include <dirent.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "common/activation.h"
#include "common/path_forms.h"
#include "common/places.h"
#include "common/process_tree.h"
#include "common/session_bus.h"
#include "front/front.h"
#include "linux/events/event_sources.h"
#include "linux/events/peers.h"
#include "linux/events/plain_programs.h"
#include "linux/events/process_table.h"
#include "linux/events/tokens.h"
#include "toolbox/processes.h"

namespace quillon {

// A scan walks over a snapshot of the known programs and applications; then it reads the user's other
// processes one by one, as far as the caller goes on.
static std::vector<ProcessSerialNumber> snapshot;
static DIR *process_folder = nullptr;

static bool known_already(pid_t pid) {
    return find_launched(pid) || find_peer(pid) || pid == getpid();
}

static void stop_plain_scan() {
    if (process_folder)
        closedir(process_folder);
    process_folder = nullptr;
}

// Sets PSN to the next of the user's other processes; false at the end.
static bool next_plain(ProcessSerialNumber *psn) {
    if (!process_folder && !(process_folder = opendir("/proc")))
        return false;
    const uid_t own = getuid();
    while (const dirent *const entry = readdir(process_folder)) {
        const pid_t pid = std::atoi(entry->d_name);
        struct stat status;
        if (pid <= 0 || known_already(pid) ||
            fstatat(dirfd(process_folder), entry->d_name, &status, 0) != 0 || status.st_uid != own)
            continue;
        *psn = {psn_plain, static_cast<std::uint32_t>(pid)};
        return true;
    }
    stop_plain_scan();
    return false;
}

static void take_snapshot() {
    forget_ended_programs();
    snapshot.clear();
    stop_plain_scan();
    for (const Launched &program : launched_programs)
        if (is_listed(program))
            snapshot.push_back({psn_launched, static_cast<std::uint32_t>(program.pid)});
    for (const PendingStart &start : pending_starts)
        snapshot.push_back({psn_pending, start.number});
    snapshot.push_back({psn_bus, static_cast<std::uint32_t>(getpid())});
    for (const Peer &peer : bus_peers)
        if (!find_launched(peer.pid))
            snapshot.push_back({psn_bus, static_cast<std::uint32_t>(peer.pid)});
}

OSErr GetNextProcess(ProcessSerialNumber *psn) {
    std::size_t next = 0;
    if (SameProcess(psn, &kNoProcess)) {
        take_snapshot();
    } else if (IsPlainProcess(psn)) {
        next = snapshot.size();
    } else {
        while (next < snapshot.size() && !SameProcess(&snapshot[next], psn))
            next++;
        next++;
    }
    if (next < snapshot.size()) {
        *psn = snapshot[next];
        return noErr;
    }
    if (next_plain(psn))
        return noErr;
    *psn = kNoProcess;
    return procNotFound;
}

int IsPlainProcess(const ProcessSerialNumber *psn) {
    return psn->highLongOfPSN == psn_plain;
}

// Sets the POSIX path of the bundle or program of a process, and its signature. False when there is none.
static bool look_up(const ProcessSerialNumber &psn, std::string *path, OSType *signature) {
    const pid_t pid = static_cast<pid_t>(psn.lowLongOfPSN);
    *signature = four("????");
    if (psn.highLongOfPSN == psn_pending) {
        const PendingStart *const start = find_pending_start(psn.lowLongOfPSN);
        *path = start ? start->path : "";
        return start != nullptr;
    }
    if (psn.highLongOfPSN == psn_launched) {
        const Launched *const program = find_launched(pid);
        if (!program)
            return false;
        *path = program->path;
        *signature = program->signature;
        return true;
    }
    if (pid == getpid()) {
        *path = common::program_of_process(pid);
        *signature = four("QUIL");
        return true;
    }
    if (psn.highLongOfPSN == psn_bus) {
        const Peer *const peer = find_peer(pid);
        if (!peer)
            return false;
        *path = peer->path;
        *signature = peer->known ? peer->signature : four("????");
        return true;
    }
    *path = common::program_of_process(pid);
    return !path->empty();
}

OSErr GetProcessInformation(const ProcessSerialNumber *psn, ProcessInfoRec *info) {
    std::string path;
    OSType signature = 0;
    if (!look_up(*psn, &path, &signature))
        return procNotFound;
    // The signature of a plain program would be its file's creator, which takes a look at the file; such
    // programs are told by their path instead (ProcessIsProgram).
    info->processNumber = *psn;
    info->processType = four("APPL");
    info->processSignature = signature;
    if (info->processName) {
        const std::string leaf = static_cast<pid_t>(psn->lowLongOfPSN) == getpid()
                                     ? "Quillon"
                                     : common::leaf_of(path).substr(0, 63);
        info->processName[0] = static_cast<unsigned char>(leaf.size());
        std::memcpy(info->processName + 1, leaf.data(), leaf.size());
    }
    if (info->processAppSpec)
        FSPathMakeSpec(path.c_str(), info->processAppSpec);
    return noErr;
}

OSErr GetCurrentProcess(ProcessSerialNumber *psn) {
    *psn = {psn_bus, static_cast<std::uint32_t>(getpid())};
    return noErr;
}

OSErr GetFrontProcess(ProcessSerialNumber *psn) {
    if (front->is_front())
        return GetCurrentProcess(psn);
    *psn = kNoProcess;
    return noErr;
}

int SameProcess(const ProcessSerialNumber *a, const ProcessSerialNumber *b) {
    return a->highLongOfPSN == b->highLongOfPSN && a->lowLongOfPSN == b->lowLongOfPSN;
}

OSErr SetFrontProcess(const ProcessSerialNumber *psn) {
    const pid_t pid = static_cast<pid_t>(psn->lowLongOfPSN);
    if (psn->highLongOfPSN == psn_pending)
        return noErr; // it comes to the front when it is started
    if (pid == getpid()) {
        front->bring_to_front(nullptr);
        return noErr;
    }
    const std::string owner = bus_owner(psn->highLongOfPSN, pid);
    sd_bus *const bus = HostBus();
    if (owner.empty() || !bus)
        return noErr; // a tool that has no window yet has nothing to show
    common::send_activate(bus, owner, common::application_path, fresh_token(""));
    return noErr;
}

OSErr EndProcess(const ProcessSerialNumber *psn) {
    const pid_t pid = static_cast<pid_t>(psn->lowLongOfPSN);
    const Launched *const program = psn->highLongOfPSN == psn_launched ? find_launched(pid) : nullptr;
    if (!program || program->exited)
        return procNotFound;
    common::end_tool(pid);
    return kill(-pid, SIGKILL) == 0 ? static_cast<OSErr>(noErr) : static_cast<OSErr>(procNotFound);
}

int ProcessHasEnded(const ProcessSerialNumber *psn) {
    const Launched *const program =
        psn->highLongOfPSN == psn_launched ? find_launched(static_cast<pid_t>(psn->lowLongOfPSN)) : nullptr;
    return program && program->exited;
}

int ProcessIsProgram(const ProcessSerialNumber *psn, const FSSpec *spec) {
    static FSRef reference;
    std::string path;
    OSType signature = 0;
    if (!look_up(*psn, &path, &signature) || FSpMakeFSRef(spec, &reference) != noErr)
        return 0;
    if (common::canonical_path(path) != common::canonical_path(reference.path))
        return 0;
    if (IsPlainProcess(psn))
        remember_asked_path(static_cast<pid_t>(psn->lowLongOfPSN), reference.path);
    return 1;
}

} // namespace quillon
