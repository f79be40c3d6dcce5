// Type and creator of files, which are stamped in extended attributes or judged from the file itself.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <zlib.h>

#include <cerrno>
#include <cstring>

#include "common/editors_table.h"
#include "linux/files/host.h"
#include "toolbox/codes.h"

namespace quillon {

namespace {

constexpr OSType unknown_code = four("????");
constexpr const char *type_attribute = "user.quillon.type";
constexpr const char *creator_attribute = "user.quillon.creator";
constexpr std::size_t looked_at = 4096;

bool read_stamp(const char *path, const char *attribute, OSType *code) {
    unsigned char bytes[4];
    if (::getxattr(path, attribute, bytes, sizeof bytes) != static_cast<ssize_t>(sizeof bytes))
        return false;
    *code = code_of_bytes(bytes);
    return true;
}

int write_stamp(const char *path, const char *attribute, OSType code) {
    OSType present = 0;
    const unsigned char bytes[4] = {static_cast<unsigned char>(code >> 24),
                                    static_cast<unsigned char>(code >> 16),
                                    static_cast<unsigned char>(code >> 8), static_cast<unsigned char>(code)};
    if (read_stamp(path, attribute, &present) && present == code)
        return 0;
    return ::setxattr(path, attribute, bytes, sizeof bytes, 0) == 0 ? 0 : errno;
}

// True for a format file of pdfTeX. Such a file, uncompressed, begins with "W2TX", the length of the engine's
// name in four bytes, and the name, filled up with NULs.
bool format_of_pdftex(int fd) {
    unsigned char head[64] = {};
    const int copy = ::dup(fd);
    const gzFile file = copy >= 0 ? gzdopen(copy, "rb") : nullptr;
    if (!file) {
        if (copy >= 0)
            ::close(copy);
        return false;
    }
    const int count = gzread(file, head, sizeof head - 1);
    gzclose(file);
    if (count < 16 || std::memcmp(head, "W2TX", 4) != 0)
        return false;
    return std::strcmp(reinterpret_cast<const char *>(head) + 8, "pdftex") == 0;
}

// True when the bytes hold no control characters but those that move the place, 26 and the escape. A PDF
// file, which begins like text, is none.
bool is_text(const unsigned char *bytes, std::size_t count) {
    if (count >= 5 && std::memcmp(bytes, "%PDF-", 5) == 0)
        return false;
    for (std::size_t i = 0; i < count; i++)
        if ((bytes[i] < 32 && !(bytes[i] >= 8 && bytes[i] <= 13) && bytes[i] != 26 && bytes[i] != 27) ||
            bytes[i] == 127)
            return false;
    return true;
}

bool is_program(const unsigned char *bytes, std::size_t count) {
    return (count >= 4 && std::memcmp(bytes, "\177ELF", 4) == 0) ||
           (count >= 2 && std::memcmp(bytes, "#!", 2) == 0);
}

// Judges type and creator from the contents. The permission to run alone does not make a program, since a
// file system without permissions marks every file as executable.
void judge(const std::string &path, const struct stat &info, FInfo *finder) {
    const bool may_run = (info.st_mode & 0111) != 0;
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0) {
        finder->fdType = may_run ? four("APPL") : unknown_code;
        return;
    }
    unsigned char bytes[looked_at];
    const ssize_t count = ::pread(fd, bytes, sizeof bytes, 0);
    const std::size_t size = count > 0 ? static_cast<std::size_t>(count) : 0;
    if (path.ends_with(".desktop") || (may_run && is_program(bytes, size)))
        finder->fdType = four("APPL");
    else if (path.ends_with(".fmt") || path.ends_with(".efmt"))
        finder->fdCreator = format_of_pdftex(fd) ? four("QXET") : unknown_code;
    else if (count >= 0 && is_text(bytes, size))
        finder->fdType = four("TEXT");
    ::close(fd);
}

} // namespace

void FinderInfo(const std::string &path, const struct stat &info, FInfo *finder) {
    OSType type = 0, creator = 0;
    *finder = {unknown_code, unknown_code, 0};
    const bool typed = read_stamp(path.c_str(), type_attribute, &type);
    const bool created = read_stamp(path.c_str(), creator_attribute, &creator);
    // Opening a pipe or a device could wait for ever or set something off, so only regular files are opened.
    if (S_ISREG(info.st_mode) && !(typed && created))
        judge(path, info, finder);
    if (typed)
        finder->fdType = type;
    if (created)
        finder->fdCreator = creator;
    else if (finder->fdType == four("APPL") && common::IsTableEditor(path.c_str()))
        finder->fdCreator = four("!Rch");
}

// Sets the POSIX path and the status of a file. fnfErr for a folder and where nothing is.
static OSErr find_file(const FSSpec *spec, std::string &path, struct stat *status) {
    const OSErr error = HostPath(*spec, path);
    if (error != noErr)
        return error;
    return ::stat(path.c_str(), status) != 0 || S_ISDIR(status->st_mode) ? fnfErr : noErr;
}

OSErr FSpGetFInfo(const FSSpec *spec, FInfo *info) {
    std::string path;
    struct stat status;
    *info = FInfo{};
    const OSErr error = find_file(spec, path, &status);
    if (error == noErr)
        FinderInfo(path, status, info);
    return error;
}

OSErr FSpSetFInfo(const FSSpec *spec, const FInfo *info) {
    std::string path;
    struct stat status;
    const OSErr error = find_file(spec, path, &status);
    if (error != noErr)
        return error;
    const int failed = write_stamp(path.c_str(), type_attribute, info->fdType);
    return ErrorCode(failed ? failed : write_stamp(path.c_str(), creator_attribute, info->fdCreator));
}

} // namespace quillon
