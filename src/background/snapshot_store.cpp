#include "background/snapshot_store.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

#include "common/field_files.h"
#include "common/path_forms.h"
#include "common/places.h"

namespace background {

namespace {

namespace files = std::filesystem;

constexpr std::uint64_t most_bytes = 500'000'000; // of all snapshots together
constexpr std::uint64_t most_work = 3600;         // seconds a day
constexpr std::time_t day = 86400, note_days = 30;
constexpr const char *part_prefix = "part-", *note_extension = ".note", *work_name = "work";

void remove_folder(const std::string &folder) {
    std::error_code ignored;
    files::remove_all(folder, ignored);
}

std::string work_file() {
    return common::snapshots_folder() + "/" + work_name;
}

// Returns the seconds of work that are noted for today.
std::uint64_t work_of_today() {
    const std::vector<std::string> fields = common::read_fields(work_file());
    if (fields.size() != 2 || fields[0] != std::to_string(std::time(nullptr) / day))
        return 0;
    return std::strtoull(fields[1].c_str(), nullptr, 10);
}

// Returns the name of the snapshot that the note at PATH names.
std::string named_by(const std::string &path) {
    const std::vector<std::string> fields = common::read_fields(path);
    return fields.size() > 4 && fields[fields.size() - 4] == "snapshot" ? fields[fields.size() - 3] : "";
}

struct Kept {
    std::string folder;
    std::uint64_t bytes = 0;
    std::time_t used = 0;
};

std::vector<Kept> kept_snapshots() {
    std::vector<Kept> kept;
    std::error_code error;
    for (const auto &entry : files::directory_iterator(common::snapshots_folder(), error)) {
        struct stat status;
        if (stat(entry.path().c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
            continue;
        Kept one = {entry.path(), 0, status.st_mtim.tv_sec};
        for (const auto &file : files::directory_iterator(entry.path(), error))
            if (stat(file.path().c_str(), &status) == 0)
                one.bytes += static_cast<std::uint64_t>(status.st_size);
        kept.push_back(one);
    }
    std::sort(kept.begin(), kept.end(), [](const Kept &a, const Kept &b) { return a.used > b.used; });
    return kept;
}

bool make_room(std::uint64_t bytes) {
    std::vector<Kept> kept = kept_snapshots();
    std::uint64_t sum = bytes;
    for (const Kept &one : kept)
        sum += one.bytes;
    for (; sum > most_bytes && !kept.empty(); kept.pop_back()) {
        sum -= kept.back().bytes;
        remove_folder(kept.back().folder);
    }
    return sum <= most_bytes;
}

// Copies the file at FROM to TO, and sees it written to the disk.
bool copy_file(const std::string &from, const std::string &to) {
    std::error_code error;
    if (!files::copy_file(from, to, error) || error)
        return false;
    const int file = open(to.c_str(), O_RDWR | O_CLOEXEC);
    const bool written = file >= 0 && fchmod(file, 0600) == 0 && fdatasync(file) == 0;
    return (file < 0 || close(file) == 0) && written;
}

} // namespace

bool tidy_snapshots() {
    const std::string folder = common::snapshots_folder();
    if (!common::make_private_folder(common::transcripts_folder()) || !common::make_private_folder(folder))
        return false;
    const std::time_t now = std::time(nullptr);
    std::set<std::string> named;
    std::vector<std::string> folders;
    std::error_code error;
    for (const auto &entry : files::directory_iterator(folder, error)) {
        struct stat status;
        const std::string path = entry.path(), leaf = entry.path().filename();
        if (lstat(path.c_str(), &status) != 0)
            continue;
        if (S_ISDIR(status.st_mode))
            folders.push_back(leaf);
        else if (leaf.ends_with(note_extension) && now - status.st_mtim.tv_sec <= note_days * day)
            named.insert(named_by(path));
        else if (leaf != work_name)
            unlink(path.c_str());
    }
    for (const std::string &leaf : folders)
        if (leaf.starts_with(part_prefix) || !named.contains(leaf))
            remove_folder(folder + "/" + leaf);
    return true;
}

std::string keep_snapshot(const toolhost::SnapshotCall &call, const std::string &format,
                          const toolhost::SnapshotTexts &texts) {
    const std::string folder = common::snapshots_folder();
    const std::string part = folder + "/" + part_prefix + std::to_string(getpid());
    std::error_code error;
    const std::uint64_t bytes = files::file_size(format, error);
    if (error || !make_room(bytes) || mkdir(part.c_str(), 0700) != 0)
        return {};
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    char name[64];
    std::snprintf(name, sizeof name, "%s-%llx-%lx-%x", call.job.substr(0, 20).c_str(),
                  static_cast<unsigned long long>(now.tv_sec), now.tv_nsec, static_cast<unsigned>(getpid()));
    if (copy_file(format, part + "/" + call.search.name + ".fmt") && toolhost::write_texts(part, texts) &&
        std::rename(part.c_str(), (folder + "/" + name).c_str()) == 0)
        return name;
    remove_folder(part);
    return {};
}

bool work_is_left() {
    return work_of_today() < most_work;
}

void note_work(std::uint64_t seconds) {
    common::replace_file(work_file(), common::joined_fields({std::to_string(std::time(nullptr) / day),
                                                             std::to_string(work_of_today() + seconds)}));
}

} // namespace background
