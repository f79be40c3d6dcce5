#include "common/run_notes.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "common/clock.h"
#include "common/places.h"
#include "common/process_tree.h"

namespace common {

namespace {

constexpr std::uint64_t patience = 1000000; // microseconds
constexpr timespec pause_between_looks = {0, 1000000};
constexpr const char *beginning = "run-";

std::string runs_folder() {
    return temporary_folder() + "/runs";
}

// Returns the names of the notes that nobody holds.
std::vector<std::string> left_notes() {
    std::vector<std::string> marks;
    DIR *const folder = opendir(runs_folder().c_str());
    if (!folder)
        return marks;
    while (const dirent *entry = readdir(folder)) {
        const std::string name = entry->d_name;
        const int file = name.starts_with(beginning) ? openat(dirfd(folder), entry->d_name,
                                                              O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK)
                                                     : -1;
        if (file < 0)
            continue;
        if (flock(file, LOCK_EX | LOCK_NB) == 0)
            marks.push_back(name);
        close(file);
    }
    closedir(folder);
    return marks;
}

// True for a process of this user that carries one of MARKS.
bool carries(pid_t process, const std::vector<std::string> &marks) {
    const std::string folder = "/proc/" + std::to_string(process);
    struct stat status;
    if (stat(folder.c_str(), &status) != 0 || status.st_uid != geteuid())
        return false;
    const std::string variables = '\0' + variables_of_process(process) + '\0';
    char target[256];
    const ssize_t size =
        readlink((folder + "/fd/" + std::to_string(run_descriptor)).c_str(), target, sizeof target);
    const std::string file(target, size > 0 ? static_cast<std::size_t>(size) : 0);
    for (const std::string &mark : marks)
        if (variables.find('\0' + std::string(run_variable) + "=" + mark + '\0') != std::string::npos ||
            file.starts_with("/memfd:" + memory_file_name(mark) + " "))
            return true;
    return false;
}

// Kills every process that carries one of MARKS, but for a guard. True when there was one, or a guard.
bool kill_marked(const std::vector<std::string> &marks) {
    bool any = false;
    DIR *const folder = opendir("/proc");
    if (!folder)
        return false;
    while (const dirent *entry = readdir(folder)) {
        const pid_t process = std::atoi(entry->d_name);
        if (process <= 1 || process == getpid() || !carries(process, marks))
            continue;
        // A guard that still lives is at work, and may yet start its program.
        if (status_of_process(process).name == guard_name)
            any = true;
        else
            any = kill_tree(process, [&] { return carries(process, marks); }) || any;
    }
    closedir(folder);
    return any;
}

} // namespace

RunNote leave_note() {
    RunNote note;
    const std::string folder = runs_folder();
    if (!make_private_folder(temporary_folder()) || !make_private_folder(folder))
        return note;
    std::string path = folder + "/new-XXXXXX";
    note.file = mkostemp(path.data(), O_CLOEXEC);
    if (note.file < 0)
        return note;
    // It is a note once it is locked, so that nobody takes it for that of a dead host before.
    const std::string mark = beginning + path.substr(path.size() - 6);
    if (flock(note.file, LOCK_EX) == 0 &&
        renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, (folder + "/" + mark).c_str(), RENAME_NOREPLACE) == 0)
        note.mark = mark;
    else
        unlink(path.c_str());
    return note;
}

void remove_note(RunNote &note) {
    if (!note.mark.empty())
        unlink((runs_folder() + "/" + note.mark).c_str());
    if (note.file >= 0)
        close(note.file);
    note = {};
}

std::string memory_file_name(const std::string &mark) {
    return "quillon-" + mark;
}

void end_left_runs() {
    const std::vector<std::string> marks = left_notes();
    if (marks.empty())
        return;
    const std::uint64_t end = now_microseconds() + patience;
    bool any = true;
    while ((any = kill_marked(marks)) && now_microseconds() < end)
        nanosleep(&pause_between_looks, nullptr);
    // What cannot be killed yet, because it waits for a disk, is left to the next look.
    if (!any)
        for (const std::string &mark : marks)
            unlink((runs_folder() + "/" + mark).c_str());
}

} // namespace common
