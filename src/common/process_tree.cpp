#include "common/process_tree.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "common/clock.h"
#include "common/host_files.h"

namespace common {

namespace {

constexpr int deepest = 300;
// The longest that a process which has been killed is waited for, in microseconds, and the pause between
// looks.
constexpr std::uint64_t patience = 1000000;
constexpr timespec pause_between_looks = {0, 1000000};

int descriptor_of(pid_t process) {
    return static_cast<int>(syscall(SYS_pidfd_open, process, 0));
}

void send_signal(int descriptor, int number) {
    syscall(SYS_pidfd_send_signal, descriptor, number, nullptr, 0);
}

bool kill_children(pid_t root, const std::string &spared, int depth);

// Kills PROCESS, for which DESCRIPTOR stands, and all below it.
void kill_with_children(int descriptor, pid_t process, int depth) {
    send_signal(descriptor, SIGSTOP);
    kill_children(process, {}, depth + 1);
    send_signal(descriptor, SIGKILL);
}

// Kills the child PROCESS of PARENT and all below it. One with the name SPARED lives on.
bool kill_child(pid_t process, pid_t parent, const std::string &spared, int depth) {
    const int descriptor =
        process > 1 && process != getpid() && depth < deepest ? descriptor_of(process) : -1;
    if (descriptor < 0)
        return false;
    const ProcessStatus status = status_of_process(process);
    bool any = status.runs() && status.parent == parent;
    if (any && !spared.empty() && status.name == spared)
        any = kill_children(process, {}, depth + 1);
    else if (any)
        kill_with_children(descriptor, process, depth);
    close(descriptor);
    return any;
}

bool kill_children(pid_t root, const std::string &spared, int depth) {
    bool any = false;
    for (const pid_t child : children_of(root))
        any = kill_child(child, root, spared, depth) || any;
    return any;
}

} // namespace

ProcessStatus status_of_process(pid_t process) {
    ProcessStatus status;
    const std::string text = read_file("/proc/" + std::to_string(process) + "/stat", 4096);
    const std::size_t begin = text.find('('), end = text.rfind(')');
    int parent = 0;
    if (begin == std::string::npos || end == std::string::npos || end < begin ||
        std::sscanf(text.c_str() + end + 1, " %c %d", &status.state, &parent) != 2)
        return {};
    status.parent = parent;
    status.name = text.substr(begin + 1, end - begin - 1);
    return status;
}

std::vector<pid_t> children_of(pid_t process) {
    std::vector<pid_t> children;
    const std::string folder = "/proc/" + std::to_string(process) + "/task";
    DIR *const threads = opendir(folder.c_str());
    if (!threads)
        return children;
    while (const dirent *entry = readdir(threads)) {
        if (entry->d_name[0] == '.')
            continue;
        std::FILE *const list = std::fopen((folder + "/" + entry->d_name + "/children").c_str(), "re");
        if (!list)
            continue;
        int child;
        while (std::fscanf(list, "%d", &child) == 1)
            children.push_back(child);
        std::fclose(list);
    }
    closedir(threads);
    return children;
}

bool kill_below(pid_t root, const std::string &spared) {
    return kill_children(root, spared, 0);
}

bool kill_tree(pid_t process, const std::function<bool()> &is_meant) {
    const int descriptor = process > 1 && process != getpid() ? descriptor_of(process) : -1;
    if (descriptor < 0)
        return false;
    // What has this id now is what the descriptor stands for, or that has ended and gets no signal.
    const bool any = is_meant() && status_of_process(process).runs();
    if (any)
        kill_with_children(descriptor, process, 0);
    close(descriptor);
    return any;
}

void end_tool(pid_t host) {
    const int descriptor = descriptor_of(host);
    if (descriptor < 0)
        return;
    const std::uint64_t end = now_microseconds() + patience;
    send_signal(descriptor, SIGSTOP);
    // A host that is stopped still takes orphans in, so what is not found now is found at the next look.
    while (kill_below(host, guard_name) && now_microseconds() < end)
        nanosleep(&pause_between_looks, nullptr);
    std::vector<pollfd> guards;
    for (const pid_t child : children_of(host))
        guards.push_back({descriptor_of(child), POLLIN, 0});
    send_signal(descriptor, SIGKILL);
    close(descriptor);
    const std::uint64_t last = now_microseconds() + patience;
    for (pollfd &guard : guards) {
        const std::uint64_t now = now_microseconds();
        if (guard.fd >= 0 && poll(&guard, 1, now < last ? static_cast<int>((last - now) / 1000) : 0) == 0)
            send_signal(guard.fd, SIGKILL);
        if (guard.fd >= 0)
            close(guard.fd);
    }
}

} // namespace common
