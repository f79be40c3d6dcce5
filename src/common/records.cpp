// The preferences file: named records, one a line, read and written by several programs at once.
//
// Where a key stands in several lines the first one counts: reading stops there and writing changes that one.
// A carriage return before a line end belongs to the line end, so that a file from another system's editor
// reads right. The tool host and the set-up use this file too, so it uses nothing of the shell.
#include "toolbox/resources.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "common/clock.h"
#include "common/text.h"
#include "common/utf8.h"

namespace quillon {

namespace {

constexpr std::size_t block_size = 64 * 1024;
constexpr std::uint64_t lock_limit = 2'000'000; // microseconds

// An open file that is closed when the object goes.
class Descriptor {
  public:
    explicit Descriptor(int fd) : fd_(fd) {}
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor() { reset(-1); }
    int get() const { return fd_; }
    void reset(int fd) {
        if (fd_ >= 0)
            ::close(fd_);
        fd_ = fd;
    }
    // Closes, and says whether the system took everything.
    bool close() {
        const int fd = fd_;
        fd_ = -1;
        return ::close(fd) == 0;
    }

  private:
    int fd_;
};

// Reads a file line by line. Only one block of it is in memory, and the line that crosses the block's end.
class LineReader {
  public:
    explicit LineReader(int fd) : fd_(fd), block_(new char[block_size]) {}

    // Puts the next line with its line end into LINE, where it stays until the next call. False at the end of
    // the file and when reading failed.
    bool next(std::string_view &line) {
        carry_.clear();
        for (;;) {
            if (at_ == end_ && !fill()) {
                line = carry_;
                return !carry_.empty() && !failed_;
            }
            const char *const from = block_.get() + at_;
            const std::size_t left = end_ - at_;
            const void *const found = std::memchr(from, '\n', left);
            const std::size_t taken =
                found ? static_cast<std::size_t>(static_cast<const char *>(found) - from) + 1 : left;
            at_ += taken;
            if (found && carry_.empty()) {
                line = {from, taken};
                return true;
            }
            carry_.append(from, taken);
            if (found) {
                line = carry_;
                return true;
            }
        }
    }
    bool failed() const { return failed_; }

  private:
    bool fill() {
        ssize_t count;
        do
            count = ::read(fd_, block_.get(), block_size);
        while (count < 0 && errno == EINTR);
        failed_ = failed_ || count < 0;
        at_ = 0;
        end_ = count > 0 ? static_cast<std::size_t>(count) : 0;
        return end_ > 0;
    }

    int fd_;
    std::unique_ptr<char[]> block_;
    std::size_t at_ = 0, end_ = 0;
    bool failed_ = false;
    std::string carry_;
};

class BlockWriter {
  public:
    explicit BlockWriter(int fd) : fd_(fd) {}

    bool put(std::string_view bytes) {
        if (pending_.size() + bytes.size() > block_size && !flush())
            return false;
        if (bytes.size() >= block_size)
            return write_all(bytes);
        pending_.append(bytes);
        return true;
    }
    bool flush() {
        const bool written = write_all(pending_);
        pending_.clear();
        return written;
    }

  private:
    bool write_all(std::string_view bytes) {
        while (!bytes.empty()) {
            const ssize_t count = ::write(fd_, bytes.data(), bytes.size());
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0)
                return false;
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
        return true;
    }

    int fd_;
    std::string pending_;
};

// Returns the line end of LINE. A carriage return at the end of a file counts as one, since its line feed may
// still be written.
std::string_view line_end_of(std::string_view line) {
    for (const std::string_view end : {"\r\n", "\n", "\r"})
        if (line.ends_with(end))
            return end;
    return "";
}

// Splits a line into its key and its value, in which the escapes still stand. False for a comment and for a
// line that is no record.
bool split_record(std::string_view line, std::string_view &key, std::string_view &value) {
    if (line.empty() || line.front() == '#')
        return false;
    line.remove_suffix(line_end_of(line).size());
    const std::size_t equals = line.find('=');
    if (equals == 0 || equals == std::string_view::npos)
        return false;
    key = line.substr(0, equals);
    value = line.substr(equals + 1);
    return true;
}

// Replaces the escapes of a value, which then stands at OUT: its length, that of RAW at most. A backslash
// that begins no escape stands for itself.
std::size_t decode(std::string_view raw, char *out) {
    std::size_t length = 0;
    for (std::size_t i = 0; i < raw.size(); i++) {
        const char next = raw[i] == '\\' && i + 1 < raw.size() ? raw[i + 1] : '\0';
        if (next == '\\' || next == 'n' || next == 'r') {
            out[length++] = next == 'n' ? '\n' : next == 'r' ? '\r' : '\\';
            i++;
        } else if (next == 'x' && i + 3 < raw.size() && common::hex_digit(raw[i + 2]) >= 0 &&
                   common::hex_digit(raw[i + 3]) >= 0) {
            out[length++] =
                static_cast<char>(common::hex_digit(raw[i + 2]) * 16 + common::hex_digit(raw[i + 3]));
            i += 3;
        } else {
            out[length++] = raw[i];
        }
    }
    return length;
}

std::string decode(std::string_view raw) {
    std::string value(raw.size(), '\0');
    value.resize(decode(raw, value.data()));
    return value;
}

// Writes control characters, bytes that are not UTF-8 and a blank at the end as \xHH, so that no text editor
// changes them when it saves the file.
std::string encode(std::string_view value) {
    std::string raw;
    raw.reserve(value.size() + 8);
    for (std::size_t i = 0; i < value.size();) {
        const auto byte = static_cast<unsigned char>(value[i]);
        const std::size_t length = common::utf8_length(value, i);
        const bool last_blank = (byte == ' ' || byte == '\t') && i + 1 == value.size();
        if (byte == '\\' || byte == '\n' || byte == '\r') {
            raw += byte == '\n' ? "\\n" : byte == '\r' ? "\\r" : "\\\\";
        } else if (length == 0 || (byte < 32 && byte != '\t') || byte == 127 || last_blank) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\x%02x", byte);
            raw += escape;
        } else {
            raw.append(value.substr(i, length));
        }
        i += length ? length : 1;
    }
    return raw;
}

// Opens the regular file at PATH and fills INFO; -1 when there is none. With O_NONBLOCK a pipe of that name
// does not hold the program up.
int open_regular(const char *path, int flags, struct stat *info) {
    const int fd = ::open(path, flags | O_CLOEXEC | O_NONBLOCK);
    if (fd >= 0 && (::fstat(fd, info) != 0 || !S_ISREG(info->st_mode))) {
        ::close(fd);
        return -1;
    }
    return fd;
}

std::string folder_of(const std::string &path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

std::string beside(const std::string &path, const char *extension) {
    const std::string folder = folder_of(path);
    return folder + "." + path.substr(folder.size()) + extension;
}

// Returns 1 when the lock is taken, 0 when another program holds it, -1 when its file cannot be opened.
int try_lock(const std::string &path, Descriptor &lock) {
    lock.reset(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
    if (lock.get() < 0)
        return -1;
    if (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0)
        return errno == EWOULDBLOCK || errno == EINTR ? 0 : -1;
    // When somebody removed the file between the two calls, this lock guards nothing.
    struct stat mine, named;
    const bool same = ::fstat(lock.get(), &mine) == 0 && ::stat(path.c_str(), &named) == 0 &&
                      mine.st_ino == named.st_ino && mine.st_dev == named.st_dev;
    return same ? 1 : 0;
}

bool take_lock(const std::string &path, Descriptor &lock) {
    timespec pause = {0, 50'000};
    const std::uint64_t start = common::now_microseconds();
    for (;;) {
        const int taken = try_lock(path, lock);
        if (taken != 0)
            return taken > 0;
        if (common::now_microseconds() - start >= lock_limit)
            return false;
        ::nanosleep(&pause, nullptr);
        if (pause.tv_nsec < 2'000'000)
            pause.tv_nsec *= 2;
    }
}

struct Change {
    std::string key, value;
    bool seen = false;
};

bool collect_changes(const RecordChange *changes, int count, std::vector<Change> &wanted) {
    for (int i = 0; i < count; i++) {
        const std::string key = changes[i].key ? changes[i].key : "";
        if (key.empty() || key.front() == '#' || key.find_first_of("=\n\r") != std::string::npos ||
            !changes[i].value)
            return false;
        Change *place = nullptr;
        for (Change &change : wanted)
            if (change.key == key)
                place = &change;
        if (!place)
            place = &wanted.emplace_back();
        place->key = key;
        place->value = changes[i].value;
    }
    return true;
}

Change *change_for(std::vector<Change> &wanted, std::string_view line, std::string_view &value) {
    std::string_view key;
    if (!split_record(line, key, value))
        return nullptr;
    for (Change &change : wanted)
        if (!change.seen && change.key == key)
            return &change;
    return nullptr;
}

// Returns 1 when the file differs from what is wanted, 0 when it does not, -1 when it cannot be read.
int differs(int fd, std::vector<Change> &wanted) {
    LineReader lines(fd);
    std::string_view line, value;
    bool different = false;
    while (!different && lines.next(line))
        if (Change *const change = change_for(wanted, line, value)) {
            change->seen = true;
            different = decode(value) != change->value;
        }
    for (Change &change : wanted) {
        different = different || !change.seen;
        change.seen = false;
    }
    return lines.failed() ? -1 : different;
}

bool write_changed(int from, int to, std::vector<Change> &wanted) {
    LineReader lines(from);
    BlockWriter out(to);
    std::string_view line, value;
    bool ended = true;
    while (lines.next(line)) {
        ended = line.ends_with('\n');
        Change *const change = change_for(wanted, line, value);
        if (change)
            change->seen = true;
        if (!out.put(change ? change->key + "=" + encode(change->value) + std::string(line_end_of(line))
                            : std::string_view(line)))
            return false;
    }
    if (lines.failed())
        return false;
    for (const Change &change : wanted) {
        if (change.seen)
            continue;
        if (!out.put(ended ? "" : "\n") || !out.put(change.key + "=" + encode(change.value) + "\n"))
            return false;
        ended = true;
    }
    return out.flush();
}

// Creates the new file beside the old one. Its name is fixed, so that killed programs leave at most one
// behind; the lock keeps other programs from it.
int create_new_file(const std::string &path) {
    const int flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;
    const int fd = ::open(path.c_str(), flags, 0600);
    if (fd >= 0 || errno != EEXIST)
        return fd;
    ::unlink(path.c_str());
    return ::open(path.c_str(), flags, 0600);
}

bool keep_mode_and_owner(int fd, const struct stat &old) {
    struct stat now;
    if (::fstat(fd, &now) != 0)
        return false;
    if (now.st_uid != old.st_uid && ::fchown(fd, old.st_uid, static_cast<gid_t>(-1)) != 0)
        return false;
    // Only a member of the group may give the file to it; the file is as good in another group.
    if (now.st_gid != old.st_gid && ::fchown(fd, static_cast<uid_t>(-1), old.st_gid) != 0)
        errno = 0;
    return (old.st_mode & 07777) == (now.st_mode & 07777) || ::fchmod(fd, old.st_mode & 07777) == 0;
}

// Puts a changed copy in the place of the file. The copy is on the disk before it gets the name, so the name
// always leads to a whole file. The folder is not synced: after a power cut the name may lead to the old
// file, which is whole too, and a second sync would double the cost.
int replace_file(const std::string &path, int old_fd, const struct stat &old, std::vector<Change> &wanted) {
    const std::string fresh_path = beside(path, ".new");
    Descriptor fresh(create_new_file(fresh_path));
    if (fresh.get() < 0)
        return 0;
    if (keep_mode_and_owner(fresh.get(), old) && write_changed(old_fd, fresh.get(), wanted) &&
        ::fsync(fresh.get()) == 0 && fresh.close() && ::rename(fresh_path.c_str(), path.c_str()) == 0)
        return 1;
    ::unlink(fresh_path.c_str());
    return 0;
}

} // namespace

int RecordFileOpens(const char *path) {
    struct stat info;
    const Descriptor file(open_regular(path, O_RDONLY, &info));
    return file.get() >= 0;
}

char *RecordRead(const char *path, const char *key, std::size_t *size) {
    struct stat info;
    if (size)
        *size = 0;
    const Descriptor file(open_regular(path, O_RDONLY, &info));
    if (file.get() < 0)
        return nullptr;
    LineReader lines(file.get());
    std::string_view line, name, raw;
    while (lines.next(line)) {
        if (!split_record(line, name, raw) || name != key)
            continue;
        char *const copy = static_cast<char *>(std::malloc(raw.size() + 1));
        const std::size_t length = copy ? decode(raw, copy) : raw.size() + 1;
        if (copy)
            copy[length] = '\0';
        if (size)
            *size = length;
        return copy;
    }
    return nullptr;
}

int RecordWrite(const char *path, const RecordChange *changes, int count) {
    std::vector<Change> wanted;
    struct stat old;
    if (!collect_changes(changes, count, wanted))
        return 0;
    // A preferences file that is a symbolic link is locked and rewritten where it points, so that whoever
    // reaches it by another name meets the same lock.
    Descriptor lock(-1);
    char target[PATH_MAX];
    if (::access(path, W_OK) != 0 || !::realpath(path, target) || !take_lock(beside(target, ".lock"), lock))
        return 0;
    const Descriptor file(open_regular(target, O_RDWR, &old));
    if (file.get() < 0)
        return 0;
    const int different = differs(file.get(), wanted);
    if (different <= 0)
        return different == 0;
    return ::lseek(file.get(), 0, SEEK_SET) == 0 && replace_file(target, file.get(), old, wanted);
}

} // namespace quillon
