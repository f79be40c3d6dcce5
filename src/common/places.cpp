#include "common/places.h"

#include <climits>
#include <cstdlib>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/host_files.h"
#include "common/path_forms.h"

namespace common {

namespace {

std::string absolute_variable(const char *name) {
    const char *const value = std::getenv(name);
    return value && value[0] == '/' ? value : "";
}

std::string user_folder(const char *variable, const char *below_home) {
    const std::string folder = absolute_variable(variable);
    return !folder.empty() ? folder : home_folder() + below_home;
}

std::string target_of_link(const std::string &link) {
    char path[PATH_MAX];
    const ssize_t length = readlink(link.c_str(), path, sizeof path);
    return length > 0 ? std::string(path, static_cast<std::size_t>(length)) : std::string();
}

} // namespace

std::string home_folder() {
    const std::string folder = absolute_variable("HOME");
    if (!folder.empty())
        return folder;
    const passwd *const user = getpwuid(geteuid());
    return user && user->pw_dir ? user->pw_dir : "";
}

std::string config_folder() {
    return user_folder("XDG_CONFIG_HOME", "/.config");
}

std::string data_folder() {
    return user_folder("XDG_DATA_HOME", "/.local/share");
}

std::string cache_folder() {
    return user_folder("XDG_CACHE_HOME", "/.cache");
}

std::string preferences_folder() {
    const std::string own = absolute_variable(private_preferences_variable);
    return own.empty() ? config_folder() : own;
}

std::string preferences_path() {
    return preferences_folder() + "/Quillon Preferences";
}

std::string support_folder() {
    return data_folder() + "/Quillon";
}

std::string formats_folder() {
    return support_folder() + "/formats";
}

std::string temporary_folder() {
    const std::string runtime = absolute_variable("XDG_RUNTIME_DIR");
    if (!runtime.empty() && is_folder(runtime))
        return runtime + "/quillon";
    const std::string folder = absolute_variable("TMPDIR");
    return (folder.empty() ? "/tmp" : folder) + "/quillon-" + std::to_string(geteuid());
}

std::string transcripts_folder() {
    return cache_folder() + "/quillon";
}

std::string snapshots_folder() {
    return transcripts_folder() + "/snapshots";
}

bool make_private_folder(const std::string &path) {
    struct stat status;
    if (!make_folders(path, 0700) || lstat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) ||
        status.st_uid != geteuid())
        return false;
    return (status.st_mode & 077) == 0 || chmod(path.c_str(), 0700) == 0;
}

std::string program_of_process(pid_t process) {
    return target_of_link("/proc/" + std::to_string(process) + "/exe");
}

static std::string text_of_process(pid_t process, const char *file) {
    constexpr std::size_t longest = 4 * 1024 * 1024;
    return read_file("/proc/" + std::to_string(process) + "/" + file, longest);
}

std::string words_of_process(pid_t process) {
    return text_of_process(process, "cmdline");
}

std::string variables_of_process(pid_t process) {
    return text_of_process(process, "environ");
}

std::string own_program() {
    return target_of_link("/proc/self/exe");
}

std::string above_own_program(int levels) {
    return folder_above(own_program(), levels);
}

} // namespace common
