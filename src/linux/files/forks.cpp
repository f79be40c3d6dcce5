// Data forks: opens, reads, writes and deletes files by their locations.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "linux/files/host.h"

namespace quillon {

namespace {

// The descriptors of the open files. A reference is an index into this, plus one; -1 marks a free place.
std::vector<int> &forks() {
    static std::vector<int> open_forks;
    return open_forks;
}

int *fork_of(std::int16_t reference) {
    const std::size_t index = static_cast<std::size_t>(reference) - 1;
    return reference > 0 && index < forks().size() && forks()[index] >= 0 ? &forks()[index] : nullptr;
}

std::int16_t keep(int fd) {
    for (std::size_t i = 0; i < forks().size(); i++)
        if (forks()[i] < 0) {
            forks()[i] = fd;
            return static_cast<std::int16_t>(i + 1);
        }
    if (forks().size() >= INT16_MAX)
        return 0;
    forks().push_back(fd);
    return static_cast<std::int16_t>(forks().size());
}

} // namespace

OSErr FSpCreate(const FSSpec *spec, OSType creator, OSType type) {
    std::string path;
    const OSErr error = HostPath(*spec, path);
    if (error != noErr)
        return error;
    if (path.rfind('/') == 0)
        return bdNamErr;
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0)
        return ErrorCode(errno == ENOENT ? ENOTDIR : errno);
    ::close(fd);
    // On a file system without attributes the stamp fails; the type is judged from the contents then.
    const FInfo info = {type, creator, 0};
    FSpSetFInfo(spec, &info);
    return noErr;
}

OSErr FSpOpenDF(const FSSpec *spec, char permission, std::int16_t *reference) {
    std::string path;
    struct stat info;
    *reference = 0;
    const OSErr error = HostPath(*spec, path);
    if (error != noErr)
        return error;
    const int fd =
        ::open(path.c_str(), (permission == 'w' ? O_RDWR : O_RDONLY) | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0)
        return ErrorCode(errno);
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(fd);
        return fnfErr;
    }
    *reference = keep(fd);
    if (*reference != 0)
        return noErr;
    ::close(fd);
    return fnOpnErr;
}

OSErr FSRead(std::int16_t reference, long *count, void *buffer) {
    const int *const fd = fork_of(reference);
    const long wanted = *count;
    *count = 0;
    if (!fd || wanted < 0)
        return fd ? OSErr{paramErr} : OSErr{fnOpnErr};
    while (*count < wanted) {
        const ssize_t got =
            ::read(*fd, static_cast<char *>(buffer) + *count, static_cast<std::size_t>(wanted - *count));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return ErrorCode(errno);
        if (got == 0)
            return eofErr;
        *count += got;
    }
    return noErr;
}

OSErr FSWrite(std::int16_t reference, long *count, const void *buffer) {
    const int *const fd = fork_of(reference);
    const long wanted = *count;
    *count = 0;
    if (!fd || wanted < 0)
        return fd ? OSErr{paramErr} : OSErr{fnOpnErr};
    while (*count < wanted) {
        const ssize_t put = ::write(*fd, static_cast<const char *>(buffer) + *count,
                                    static_cast<std::size_t>(wanted - *count));
        if (put < 0 && errno == EINTR)
            continue;
        if (put <= 0)
            return errno == EBADF ? OSErr{wPrErr} : ErrorCode(errno ? errno : EIO);
        *count += put;
    }
    return noErr;
}

OSErr SetEOF(std::int16_t reference, long length) {
    const int *const fd = fork_of(reference);
    if (!fd)
        return fnOpnErr;
    if (::ftruncate(*fd, length) != 0)
        return ErrorCode(errno);
    // A mark behind the new end moves to it.
    if (::lseek(*fd, 0, SEEK_CUR) > length)
        ::lseek(*fd, length, SEEK_SET);
    return noErr;
}

OSErr FSClose(std::int16_t reference) {
    int *const fd = fork_of(reference);
    if (!fd)
        return fnOpnErr;
    const int closed = ::close(*fd);
    *fd = -1;
    return closed == 0 ? OSErr{noErr} : ErrorCode(errno);
}

OSErr FSpDelete(const FSSpec *spec) {
    std::string path;
    const OSErr error = HostPath(*spec, path);
    if (error != noErr)
        return error;
    return ::unlink(path.c_str()) == 0 ? OSErr{noErr} : ErrorCode(errno);
}

std::FILE *OpenPosixFile(const char *posix_path, const char *mode) {
    struct stat info;
    if (::stat(posix_path, &info) == 0 && (S_ISDIR(info.st_mode) || S_ISFIFO(info.st_mode))) {
        errno = S_ISDIR(info.st_mode) ? EISDIR : ENXIO;
        return nullptr;
    }
    return std::fopen(posix_path, (std::string(mode) + "e").c_str());
}

} // namespace quillon
