#include "background/unpack.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>
#include <zlib.h>

#include "background/format_place.h"
#include "common/field_files.h"
#include "common/host_files.h"
#include "common/path_forms.h"
#include "common/places.h"

namespace background {

namespace {

namespace files = std::filesystem;

constexpr std::uint64_t most_bytes = 200'000'000; // of all copies together
constexpr std::time_t search_days = 30;           // a search that nobody has made for so long is forgotten
constexpr std::size_t block_size = 1 << 20;
constexpr const char *part_prefix = "part-", *note_name = "original";
constexpr const char *search_extension = ".search";

// A copy that is kept: the folder, and what its note says.
struct Kept {
    std::string folder;
    std::uint64_t bytes = 0;
    std::time_t used = 0;
};

void remove_folder(const std::string &folder) {
    std::error_code ignored;
    files::remove_all(folder, ignored);
}

// True while the note in the folder of a copy, the path and the stamp of its original, is true.
bool holds(const std::string &folder) {
    const std::vector<std::string> note = common::read_fields(folder + "/" + note_name);
    return note.size() == 2 && toolhost::stamp_of(note[0]) == note[1];
}

std::vector<Kept> kept_copies() {
    std::vector<Kept> kept;
    std::error_code error;
    for (const auto &entry : files::directory_iterator(toolhost::copies_folder(), error)) {
        struct stat status;
        const std::string folder = entry.path();
        if (stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
            continue;
        Kept copy = {folder, 0, status.st_mtim.tv_sec};
        for (const auto &file : files::directory_iterator(folder, error))
            if (stat(file.path().c_str(), &status) == 0)
                copy.bytes += static_cast<std::uint64_t>(status.st_size);
        kept.push_back(copy);
    }
    return kept;
}

// Removes the copies that were not used for the longest time until there is room for BYTES more.
bool make_room(std::uint64_t bytes) {
    std::vector<Kept> kept = kept_copies();
    std::sort(kept.begin(), kept.end(), [](const Kept &a, const Kept &b) { return a.used > b.used; });
    std::uint64_t sum = bytes;
    for (const Kept &copy : kept)
        sum += copy.bytes;
    for (; sum > most_bytes && !kept.empty(); kept.pop_back()) {
        sum -= kept.back().bytes;
        remove_folder(kept.back().folder);
    }
    return sum <= most_bytes;
}

// Unpacks what is open as IN into a new file at PATH. LENGTH receives the number of bytes. The answer is "no"
// for what gets no copy: a file that is not compressed, damaged, too large, or no format of ENGINE.
Unpacked unpack(int in, const std::string &path, const std::string &engine,
                const std::function<bool()> &goes_on, std::uint64_t *length) {
    const int copy = dup(in);
    const gzFile packed = copy >= 0 ? gzdopen(copy, "rb") : nullptr;
    const int out = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    std::vector<char> block(block_size);
    Unpacked result = packed && out >= 0 ? Unpacked::yes : Unpacked::ended_early;
    // A format begins with "W2TX", the length of the engine's name in four bytes, and that name.
    constexpr std::size_t name_at = 8;
    *length = 0;
    while (result == Unpacked::yes) {
        const int count = gzread(packed, block.data(), static_cast<unsigned>(block.size()));
        const std::size_t size = count > 0 ? static_cast<std::size_t>(count) : 0;
        if (count < 0 || gzdirect(packed) || *length + size > most_bytes)
            result = Unpacked::no;
        else if (*length == 0 &&
                 (size < name_at + engine.size() + 1 || std::memcmp(block.data(), "W2TX", 4) != 0 ||
                  std::memcmp(block.data() + name_at, engine.c_str(), engine.size() + 1) != 0))
            result = Unpacked::no;
        else if (size == 0)
            break;
        else if (!goes_on() || write(out, block.data(), size) != static_cast<ssize_t>(size))
            result = Unpacked::ended_early;
        *length += size;
    }
    // The sum at the end of the packed file is checked when it is closed; so is its being whole.
    if (packed && gzclose(packed) != Z_OK && result == Unpacked::yes)
        result = Unpacked::no;
    if (out >= 0 && (fdatasync(out) != 0 || close(out) != 0) && result == Unpacked::yes)
        result = Unpacked::ended_early;
    return result;
}

// Makes the copy of ORIGINAL in the folder NAME. Nothing is under that name before it is whole.
Unpacked make_copy(const std::string &original, const std::string &stamp, const std::string &name,
                   const std::string &engine, const std::function<bool()> &goes_on, std::uint64_t *length) {
    const std::string folder = toolhost::copies_folder();
    const std::string part = folder + "/" + part_prefix + std::to_string(getpid());
    const int in = open(original.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (in < 0 || mkdir(part.c_str(), 0700) != 0) {
        close(in);
        return Unpacked::ended_early;
    }
    Unpacked result = unpack(in, part + "/" + common::leaf_of(original), engine, goes_on, length);
    close(in);
    // What was read is that original only when it did not change meanwhile.
    if (result == Unpacked::yes && toolhost::stamp_of(original) != stamp)
        result = Unpacked::ended_early;
    if (result == Unpacked::yes && !make_room(0))
        result = Unpacked::no;
    if (result == Unpacked::yes &&
        (!common::replace_file(part + "/" + note_name, common::joined_fields({original, stamp})) ||
         std::rename(part.c_str(), (folder + "/" + name).c_str()) != 0))
        result = Unpacked::ended_early;
    if (result != Unpacked::yes)
        remove_folder(part);
    return result;
}

} // namespace

Unpacked unpack_format(const std::string &packed, const std::string &path, const std::string &engine,
                       const std::function<bool()> &goes_on, std::uint64_t *length) {
    const int in = open(packed.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (in < 0)
        return Unpacked::ended_early;
    const Unpacked result = unpack(in, path, engine, goes_on, length);
    close(in);
    return result;
}

bool tidy_copies() {
    const std::string folder = toolhost::copies_folder();
    std::error_code error;
    if (!common::make_private_folder(common::transcripts_folder()) || !common::make_private_folder(folder))
        return false;
    const std::time_t now = std::time(nullptr);
    for (const auto &entry : files::directory_iterator(folder, error)) {
        const std::string path = entry.path(), leaf = common::leaf_of(path);
        struct stat status;
        if (lstat(path.c_str(), &status) != 0)
            continue;
        if (S_ISDIR(status.st_mode)) {
            if (leaf.starts_with(part_prefix) || !holds(path))
                remove_folder(path);
        } else if (!leaf.ends_with(search_extension) || now - status.st_mtim.tv_sec > search_days * 86400) {
            unlink(path.c_str());
        }
    }
    return true;
}

void copy_format(const toolhost::FormatSearch &search, const toolhost::Variables &environment,
                 const std::function<bool()> &goes_on) {
    FormatPlace place;
    if (!goes_on() || !find_format(search, environment, place) || place.path.empty() || !goes_on())
        return;
    const std::string stamp = toolhost::stamp_of(place.path);
    const std::string name = toolhost::copy_name(place.path, stamp);
    const std::string folder = toolhost::copies_folder() + "/" + name;
    struct stat status;
    std::uint64_t length = 0;
    Unpacked made = Unpacked::yes;
    if (stat((folder + "/" + search.name + ".fmt").c_str(), &status) == 0 && holds(folder))
        length = static_cast<std::uint64_t>(status.st_size);
    else
        made = make_copy(place.path, stamp, name, common::leaf_of(search.program), goes_on, &length);
    if (made == Unpacked::ended_early)
        return;
    std::vector<std::string> fields = toolhost::search_head(search);
    for (const std::string &variable : place.variables)
        fields.insert(fields.end(), {"variable", variable, toolhost::variable_field(environment, variable)});
    for (const auto &[path, its_stamp] : place.stamps)
        fields.insert(fields.end(), {"place", path, its_stamp});
    fields.insert(fields.end(), {"original", place.path, stamp});
    const bool copied = made == Unpacked::yes;
    fields.insert(fields.end(), {"copy", copied ? name : "", copied ? std::to_string(length) : "", "end"});
    common::replace_file(toolhost::search_file(search, environment), common::joined_fields(fields));
}

} // namespace background
