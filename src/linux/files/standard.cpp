// The standard folders of this host.
#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "common/host_files.h"
#include "common/places.h"
#include "linux/files/host.h"

namespace quillon {

namespace {

std::string fonts_folder() {
    const char *const system_fonts = "/usr/share/fonts";
    return common::is_folder(system_fonts) ? system_fonts : common::data_folder() + "/fonts";
}

} // namespace

OSErr FindFolder(OSType kind, int create, std::int16_t *vref, std::int32_t *dir_id) {
    std::string path, normal, name;
    *vref = 0;
    *dir_id = 0;
    if (kind == four("pref"))
        path = common::preferences_folder();
    else if (kind == four("asup"))
        path = common::data_folder();
    else if (kind == four("cusr"))
        path = common::home_folder();
    else if (kind == four("temp"))
        path = common::temporary_folder();
    else if (kind == four("trns"))
        path = common::transcripts_folder();
    else if (kind == four("font"))
        path = fonts_folder();
    if (!NormalPath(path, normal))
        return fnfErr;
    if (create && !common::make_folders(normal, 0700))
        return ErrorCode(errno ? errno : ENOENT);
    if (!common::is_folder(normal))
        return fnfErr;
    if (kind == four("temp") && !common::make_private_folder(normal))
        return permErr;
    FSSpec inside;
    const OSErr error = LocationOf(normal + "/.", &inside);
    if (error != noErr && error != fnfErr)
        return error;
    *vref = inside.vRefNum;
    *dir_id = inside.parID;
    return noErr;
}

void RemoveStaleTranscripts() {
    constexpr const char *prefix = "transcript-";
    constexpr long shortest_age = 60; // seconds
    const std::string folder = common::transcripts_folder();
    DIR *const entries = ::opendir(folder.c_str());
    if (!entries)
        return;
    const std::time_t now = std::time(nullptr);
    while (const dirent *const entry = ::readdir(entries)) {
        struct stat info;
        if (std::strncmp(entry->d_name, prefix, std::strlen(prefix)) != 0 ||
            ::fstatat(::dirfd(entries), entry->d_name, &info, AT_SYMLINK_NOFOLLOW) != 0 ||
            !S_ISREG(info.st_mode) || now - info.st_mtime < shortest_age)
            continue;
        const pid_t host = static_cast<pid_t>(std::atol(entry->d_name + std::strlen(prefix)));
        if (host <= 0 || (::kill(host, 0) != 0 && errno == ESRCH))
            ::unlinkat(::dirfd(entries), entry->d_name, 0);
    }
    ::closedir(entries);
}

} // namespace quillon
