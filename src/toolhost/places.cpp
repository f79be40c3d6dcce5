#include "places.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <pwd.h>
#include <sys/auxv.h>
#include <sys/stat.h>
#include <unistd.h>

#include "toolbox/resources.h"

namespace toolhost {

namespace {

constexpr char colon_byte = 30;

std::string read_small_file(const std::string &path) {
    std::string text;
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return text;
    char block[4096];
    ssize_t count;
    while (text.size() < 65536 && (count = read(file, block, sizeof block)) > 0)
        text.append(block, static_cast<std::size_t>(count));
    close(file);
    return text;
}

std::string parent_of(const std::string &path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos || slash == 0 ? std::string() : path.substr(0, slash);
}

std::string trimmed(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r'))
        text.remove_suffix(1);
    return std::string(text);
}

// <bundle> of <bundle>/Contents/Linux/<tool>, the folder made canonical and the leaf left alone.
std::string bundle_of_program(const std::string &program, std::string &leaf) {
    const std::size_t slash = program.rfind('/');
    if (slash == std::string::npos)
        return {};
    leaf = program.substr(slash + 1);
    char *const folder = realpath(program.substr(0, slash + 1).c_str(), nullptr);
    if (!folder)
        return {};
    const std::string linux_folder = folder;
    std::free(folder);
    constexpr std::string_view ending = ".app/Contents/Linux";
    if (!linux_folder.ends_with(ending))
        return {};
    return parent_of(parent_of(linux_folder));
}

std::string home_folder() {
    if (const char *home = std::getenv("HOME"); home && *home == '/')
        return home;
    const passwd *const entry = getpwuid(getuid());
    return entry ? entry->pw_dir : "/";
}

std::string base_folder(const char *variable, const char *fallback) {
    if (const char *value = std::getenv(variable); value && *value == '/')
        return value;
    return home_folder() + "/" + fallback;
}

} // namespace

std::string Bundle::info_or(const std::string &key, const std::string &fallback) const {
    const auto found = info.find(key);
    return found == info.end() || found->second.empty() ? fallback : found->second;
}

bool read_bundle(const std::string &path, Bundle &bundle) {
    const std::string package = read_small_file(path + "/Contents/PkgInfo");
    if (package.size() < 8)
        return false;
    bundle.path = path;
    bundle.home = parent_of(path);
    bundle.signature = package.substr(4, 4);
    const std::string text = read_small_file(path + "/Contents/Info");
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        const std::string_view line = std::string_view(text).substr(start, end - start);
        const std::size_t equals = line.find('=');
        if (equals != std::string_view::npos && !line.starts_with('#'))
            bundle.info[trimmed(line.substr(0, equals))] = trimmed(line.substr(equals + 1));
        start = end + 1;
    }
    return true;
}

bool find_bundle(const char *argv0, Bundle &bundle) {
    const auto started_as = reinterpret_cast<const char *>(getauxval(AT_EXECFN));
    for (const char *name : {started_as, argv0}) {
        std::string leaf;
        const std::string path = name ? bundle_of_program(name, leaf) : std::string();
        if (path.empty() || !read_bundle(path, bundle))
            continue;
        bundle.tool = leaf;
        return true;
    }
    return false;
}

std::string preferences_path() {
    return base_folder("XDG_CONFIG_HOME", ".config") + "/Quillon Preferences";
}

std::string support_folder() {
    return base_folder("XDG_DATA_HOME", ".local/share") + "/Quillon";
}

std::string formats_folder() {
    return support_folder() + "/formats";
}

std::string transcripts_folder() {
    const std::string cache = base_folder("XDG_CACHE_HOME", ".cache");
    const std::string folder = cache + "/quillon";
    if (mkdir(folder.c_str(), 0700) != 0 && errno == ENOENT) {
        mkdir(cache.c_str(), 0700);
        mkdir(folder.c_str(), 0700);
    }
    struct stat status;
    if (lstat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) || status.st_uid != getuid())
        return {};
    if ((status.st_mode & 077) != 0)
        chmod(folder.c_str(), 0700);
    return folder;
}

std::string setting(const char *key) {
    static const std::string path = preferences_path();
    std::size_t size = 0;
    char *const value = quillon::RecordRead(path.c_str(), key, &size);
    if (!value)
        return {};
    std::string text(value, size);
    std::free(value);
    return text;
}

unsigned char space_byte() {
    const std::string value = setting("SPACECHAR");
    int number = 0;
    if (std::sscanf(value.c_str(), "%d", &number) != 1 || number < 1 || number > 255)
        number = 202;
    return static_cast<unsigned char>(number);
}

std::string to_unix_path(std::string_view posix, unsigned char space) {
    std::string path(posix);
    for (char &c : path)
        c = c == ' ' ? static_cast<char>(space) : c == ':' ? colon_byte : c;
    return path;
}

std::string to_posix_path(std::string_view unix_path, unsigned char space) {
    std::string path(unix_path);
    for (char &c : path)
        c = static_cast<unsigned char>(c) == space ? ' ' : c == colon_byte ? ':' : c;
    return path;
}

std::string expand_setting_path(std::string_view value, const std::string &home, unsigned char space) {
    std::string rest = to_posix_path(value, space);
    if (rest == "~")
        return home;
    if (rest.starts_with("~/../"))
        return parent_of(home) + rest.substr(4);
    if (rest.starts_with("~/"))
        return home + rest.substr(1);
    return rest;
}

std::string absolute_path(const std::string &folder, std::string path) {
    while (path.starts_with("./"))
        path.erase(0, path.find_first_not_of('/', 1));
    if (path.starts_with('/'))
        return path;
    return folder.ends_with('/') ? folder + path : folder + "/" + path;
}

bool is_regular_file(const std::string &path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

std::string find_program(const std::string &program, const std::string &search, const std::string &folder) {
    if (program.find('/') != std::string::npos) {
        const std::string path = absolute_path(folder, program);
        return access(path.c_str(), X_OK) == 0 && is_regular_file(path) ? path : std::string();
    }
    for (std::size_t start = 0; start <= search.size();) {
        const std::size_t end = std::min(search.find(':', start), search.size());
        const std::string place = search.substr(start, end - start);
        const std::string path = place + "/" + program;
        if (place.starts_with('/') && access(path.c_str(), X_OK) == 0 && is_regular_file(path))
            return path;
        start = end + 1;
    }
    return {};
}

} // namespace toolhost
