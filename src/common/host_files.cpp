#include "common/host_files.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/path_forms.h"

namespace common {

bool is_regular_file(const std::string &path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool is_folder(const std::string &path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool can_run(const std::string &path) {
    return access(path.c_str(), X_OK) == 0 && is_regular_file(path);
}

// The lease is given back at once. When somebody opens the file in between, the host sends a signal, by
// default one that ends the program; SIGURG, which does nothing, is chosen instead.
static bool lease_is_refused(const std::string &path, int kind) {
    struct stat info;
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (file < 0)
        return false;
    bool refused = false;
    if (fstat(file, &info) == 0 && S_ISREG(info.st_mode) && fcntl(file, F_SETSIG, SIGURG) == 0) {
        refused = fcntl(file, F_SETLEASE, kind) != 0 && (errno == EAGAIN || errno == EBUSY);
        fcntl(file, F_SETLEASE, F_UNLCK);
    }
    close(file);
    return refused;
}

bool file_is_open(const std::string &path) {
    return lease_is_refused(path, F_WRLCK);
}

bool file_is_written(const std::string &path) {
    return lease_is_refused(path, F_RDLCK);
}

std::string read_file(const std::string &path, std::size_t limit) {
    std::string text;
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0)
        return text;
    char block[8192];
    ssize_t count;
    while (text.size() < limit && (count = read(file, block, sizeof block)) > 0)
        text.append(block, static_cast<std::size_t>(count));
    close(file);
    return text;
}

bool make_folders(const std::string &path, unsigned mode) {
    if (is_folder(path))
        return true;
    const std::string above = folder_above(path);
    if (!above.empty() && !make_folders(above, mode))
        return false;
    return mkdir(path.c_str(), mode) == 0 || (errno == EEXIST && is_folder(path));
}

std::string find_program(const std::string &program, const std::string &search, const std::string &folder) {
    if (program.find('/') != std::string::npos) {
        const std::string path = absolute_path(folder, program);
        return can_run(path) ? path : std::string();
    }
    for (const std::string &place : split_list(search))
        if (const std::string path = place + "/" + program; place.starts_with('/') && can_run(path))
            return path;
    return {};
}

} // namespace common
