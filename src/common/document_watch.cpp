#include "common/document_watch.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string_view>
#include <sys/inotify.h>
#include <unistd.h>

#include "common/clock.h"
#include "common/document_record.h"
#include "common/host_files.h"
#include "common/path_forms.h"

namespace common {

namespace {

// A burst has ended when nothing was saved for this long. It delays every run, so it is short; what comes
// later makes one more run.
constexpr std::uint64_t quiet_time = 8000; // microseconds
// A burst that does not end is followed by a run all the same.
constexpr std::uint64_t longest_burst = 200000;
// So many runs in a row may follow changes that were made while the one before ran.
constexpr int longest_chain = 5;
// The contents of larger files are not compared.
constexpr std::size_t largest_compared = std::size_t{16} << 20;
// How often the host is asked for more at once, so that a flood of changes holds nobody up.
constexpr int most_reads = 64;

constexpr std::uint32_t saved = IN_CLOSE_WRITE | IN_MOVED_TO;
constexpr std::uint32_t gone = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED;

bool is_before(const timespec &a, const timespec &b) {
    return a.tv_sec != b.tv_sec ? a.tv_sec < b.tv_sec : a.tv_nsec < b.tv_nsec;
}

const char *reason_of(int error) {
    return error == ENOSPC || error == EMFILE ? "this user watches too many files already"
                                              : std::strerror(error);
}

// Returns the path of the file that the links at PATH lead to, PATH when there is none.
std::string behind_links(const std::string &path) {
    char real[PATH_MAX];
    return realpath(path.c_str(), real) ? real : path;
}

} // namespace

DocumentWatch::State DocumentWatch::state_of(const std::string &path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return {};
    return {true, status.st_dev, status.st_ino, status.st_size, status.st_mtim};
}

bool DocumentWatch::begin(const std::string &main, std::string *problem) {
    end();
    descriptor_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (descriptor_ < 0) {
        *problem = reason_of(errno);
        return false;
    }
    main_ = main;
    fill();
    if (failure_ == 0)
        return true;
    *problem = reason_of(failure_);
    end();
    return false;
}

void DocumentWatch::end() {
    if (descriptor_ >= 0)
        close(descriptor_);
    descriptor_ = -1;
    main_.clear();
    endless_.clear();
    files_.clear();
    folders_.clear();
    touched_.clear();
    chain_ = failure_ = 0;
}

// Brings the files and folders up to the record of the document. What is known of a file that stays is kept.
void DocumentWatch::fill() {
    const DocumentRecord record = read_document_record(main_);
    std::set<std::string> paths = {main_};
    paths.insert(record.read.begin(), record.read.end());
    for (const auto *own : {&record.written, &record.carried})
        for (const std::string &path : *own)
            if (path != main_)
                paths.erase(path);
    std::erase_if(files_, [&](const auto &file) { return !paths.contains(file.first); });
    for (auto &[path, folder] : folders_)
        folder.names.clear();
    for (const std::string &path : paths) {
        if (!files_.contains(path))
            files_[path].state = state_of(path);
        add_name(path, path);
        // A program that saves through a link changes the other folder.
        if (const std::string real = behind_links(path); real != path)
            add_name(real, path);
    }
    std::set<int> in_use, unused;
    for (const auto &[path, folder] : folders_)
        (folder.names.empty() ? unused : in_use).insert(folder.number);
    for (const int number : unused)
        // One folder may have two paths.
        if (number >= 0 && !in_use.contains(number))
            inotify_rm_watch(descriptor_, number);
    std::erase_if(folders_, [](const auto &folder) { return folder.second.names.empty(); });
    // Watching a folder that has gone adds the one above it.
    for (bool added = true; added;) {
        added = false;
        for (auto &[path, folder] : folders_)
            if (folder.number < 0 && failure_ == 0) {
                const std::size_t before = folders_.size();
                watch_folder(path, folder);
                added = added || folders_.size() != before;
            }
    }
}

// Watches the file FILE under the name that it has at PATH.
void DocumentWatch::add_name(const std::string &path, const std::string &file) {
    auto &names = folders_[folder_above(path)].names;
    const std::string name = leaf_of(path);
    const auto [from, to] = names.equal_range(name);
    if (std::none_of(from, to, [&](const auto &entry) { return entry.second == file; }))
        names.emplace(name, file);
}

// A folder that is not there is waited for in the one above it.
void DocumentWatch::watch_folder(const std::string &path, Folder &folder) {
    folder.number = inotify_add_watch(descriptor_, path.empty() ? "/" : path.c_str(),
                                      saved | gone | IN_CREATE | IN_ONLYDIR | IN_EXCL_UNLINK);
    if (folder.number >= 0)
        return;
    if (errno == ENOSPC || errno == ENOMEM)
        failure_ = errno;
    else if (path.size() > 1)
        add_name(path, path);
}

// The folder that the host calls NUMBER is no longer at its path.
void DocumentWatch::lose_folder(int number) {
    for (auto &[path, folder] : folders_)
        if (folder.number == number) {
            inotify_rm_watch(descriptor_, number);
            folder.number = -1;
        }
}

void DocumentWatch::touch(const std::string &path) {
    last_touch_ = now_microseconds();
    if (touched_.empty())
        first_touch_ = last_touch_;
    touched_.insert(path);
}

void DocumentWatch::take_event(int number, std::uint32_t what, const char *name) {
    // The host has dropped changes, or a folder has gone, or one that was waited for has come.
    const bool all = what & IN_Q_OVERFLOW;
    bool other_folders = what & gone;
    if (what & gone)
        lose_folder(number);
    for (const auto &[path, folder] : folders_) {
        if (folder.number != number)
            continue;
        const auto [from, to] = folder.names.equal_range(name);
        for (auto entry = from; entry != to; ++entry)
            if (!files_.contains(entry->second))
                other_folders = true;
            else if (what & saved)
                touch(entry->second);
    }
    if (other_folders)
        fill();
    if (all || other_folders)
        for (const auto &[path, file] : files_)
            touch(path);
}

void DocumentWatch::take_changes() {
    alignas(inotify_event) std::array<char, 65536> block;
    for (int reads = 0; descriptor_ >= 0 && reads < most_reads; reads++) {
        const ssize_t size = read(descriptor_, block.data(), block.size());
        if (size <= 0)
            return;
        const inotify_event *event = nullptr;
        for (ssize_t at = 0; at < size; at += static_cast<ssize_t>(sizeof *event + event->len)) {
            event = reinterpret_cast<const inotify_event *>(block.data() + at);
            take_event(event->wd, event->mask, event->len ? event->name : "");
        }
    }
}

int DocumentWatch::due_in() const {
    if (touched_.empty() || runs_)
        return -1;
    const std::uint64_t now = now_microseconds(),
                        due = std::min(last_touch_ + quiet_time, first_touch_ + longest_burst);
    return due <= now ? 0 : static_cast<int>((due - now + 999) / 1000);
}

// True when the file at PATH is another than it was. BY_CONTENT: its contents have to differ.
bool DocumentWatch::was_saved(const std::string &path, bool by_content) {
    const auto found = files_.find(path);
    const State now = state_of(path);
    // One that has gone is written again in a moment, or is missed by the next run.
    if (found == files_.end() || !now.exists)
        return false;
    const State before = found->second.state;
    const bool same = before.exists && before.device == now.device && before.inode == now.inode &&
                      before.size == now.size && before.time.tv_sec == now.time.tv_sec &&
                      before.time.tv_nsec == now.time.tv_nsec;
    const std::uint64_t known = found->second.content;
    if (same && known == 0)
        return false;
    std::uint64_t content = 0;
    if (static_cast<std::size_t>(now.size) <= largest_compared)
        content = std::hash<std::string>{}(read_file(path, largest_compared)) | 1;
    found->second = {now, content};
    // The host's times are coarse, so two saves in a row may leave the same state.
    return same || by_content ? known == 0 || known != content : true;
}

bool DocumentWatch::take_due() {
    const std::set<std::string> touched = std::move(touched_);
    touched_.clear();
    bool any = false;
    for (const std::string &path : touched)
        any = was_saved(path, false) || any;
    return any;
}

void DocumentWatch::run_begins() {
    take_changes();
    // What is saved by now, the run reads.
    for (const std::string &path : touched_)
        was_saved(path, false);
    touched_.clear();
    runs_ = true;
    clock_gettime(CLOCK_REALTIME, &run_began_);
}

bool DocumentWatch::run_ended(const std::string &main, std::string *problem) {
    const bool other = main != main_;
    runs_ = false;
    if (other && !begin(main, problem))
        return false;
    take_changes();
    std::set<std::string> known;
    for (const auto &[path, file] : files_)
        known.insert(path);
    fill();
    const std::set<std::string> touched = std::move(touched_);
    touched_.clear();
    std::string changed;
    for (const auto &[path, file] : files_) {
        // A file that only this run has told of may have been saved after the run had read it. The times of
        // files may lag behind by some milliseconds; no engine has read a file that early.
        const bool is_new = other || !known.contains(path);
        if (is_new ? file.state.exists && is_before(run_began_, file.state.time)
                   : touched.contains(path) && was_saved(path, true))
            changed = path;
    }
    if (failure_ != 0) {
        *problem = reason_of(failure_);
        end();
        return false;
    }
    endless_.clear();
    if (changed.empty()) {
        chain_ = 0;
    } else if (++chain_ > longest_chain) {
        endless_ = leaf_of(changed);
    } else {
        files_[changed].state = {};
        touch(changed);
    }
    return true;
}

} // namespace common
