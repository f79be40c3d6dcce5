// The host's standard folders.
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "linux/files_host.h"

namespace quillon {

namespace {

// A variable that is not an absolute path counts as not set.
std::string variable(const char *name) {
    const char *const value = std::getenv(name);
    return value && value[0] == '/' ? value : "";
}

std::string home_folder() {
    const std::string folder = variable("HOME");
    if (!folder.empty())
        return folder;
    const passwd *const user = ::getpwuid(::geteuid());
    return user && user->pw_dir ? user->pw_dir : "";
}

std::string user_folder(const char *name, const char *below_home) {
    const std::string folder = variable(name);
    return !folder.empty() ? folder : home_folder() + below_home;
}

bool is_folder(const std::string &path) {
    struct stat info;
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool make_folders(const std::string &path) {
    if (is_folder(path))
        return true;
    const std::size_t slash = path.rfind('/');
    if (slash != std::string::npos && slash > 0 && !make_folders(path.substr(0, slash)))
        return false;
    return ::mkdir(path.c_str(), 0700) == 0 || (errno == EEXIST && is_folder(path));
}

// Others may write where this folder stands: only a real folder of the user's own is taken, and nobody else
// is let in.
bool is_private(const std::string &path) {
    struct stat info;
    if (::lstat(path.c_str(), &info) != 0 || !S_ISDIR(info.st_mode) || info.st_uid != ::geteuid())
        return false;
    return (info.st_mode & 077) == 0 || ::chmod(path.c_str(), 0700) == 0;
}

std::string temporary_folder() {
    const std::string runtime = variable("XDG_RUNTIME_DIR");
    if (!runtime.empty() && is_folder(runtime))
        return runtime + "/quillon";
    const std::string folder = variable("TMPDIR");
    return (folder.empty() ? "/tmp" : folder) + "/quillon-" + std::to_string(::geteuid());
}

std::string fonts_folder() {
    const char *const system_fonts = "/usr/share/fonts";
    return is_folder(system_fonts) ? system_fonts : user_folder("XDG_DATA_HOME", "/.local/share") + "/fonts";
}

} // namespace

OSErr FindFolder(OSType kind, int create, std::int16_t *vref, std::int32_t *dir_id) {
    std::string path, normal, name;
    *vref = 0;
    *dir_id = 0;
    if (kind == four("pref"))
        path = user_folder("XDG_CONFIG_HOME", "/.config");
    else if (kind == four("asup"))
        path = user_folder("XDG_DATA_HOME", "/.local/share");
    else if (kind == four("temp"))
        path = temporary_folder();
    else if (kind == four("trns"))
        path = user_folder("XDG_CACHE_HOME", "/.cache") + "/quillon";
    else if (kind == four("font"))
        path = fonts_folder();
    if (!NormalPath(path, normal))
        return fnfErr;
    if (create && !make_folders(normal))
        return ErrorCode(errno ? errno : ENOENT);
    if (!is_folder(normal))
        return fnfErr;
    if (kind == four("temp") && !is_private(normal))
        return permErr;
    FSSpec inside;
    const OSErr error = LocationOf(normal + "/.", &inside);
    if (error != noErr && error != fnfErr)
        return error;
    *vref = inside.vRefNum;
    *dir_id = inside.parID;
    return noErr;
}

} // namespace quillon
