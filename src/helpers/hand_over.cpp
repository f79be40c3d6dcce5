#include "helpers/hand_over.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

namespace helpers {

namespace {

constexpr int steps = 50;
constexpr long step_nanoseconds = 20'000'000;

// The temporary folder, made when it is missing; empty when it is not the user's own.
std::string temporary_folder() {
    const char *const runtime = std::getenv("XDG_RUNTIME_DIR");
    const char *const temporary = std::getenv("TMPDIR");
    const std::string folder = runtime && *runtime == '/'
                                   ? std::string(runtime) + "/quillon"
                                   : std::string(temporary && *temporary == '/' ? temporary : "/tmp") +
                                         "/quillon-" + std::to_string(getuid());
    struct stat info;
    mkdir(folder.c_str(), 0700);
    if (lstat(folder.c_str(), &info) != 0 || !S_ISDIR(info.st_mode) || info.st_uid != getuid())
        return "";
    return folder;
}

std::string mark_path(const std::string &document) {
    const std::string folder = temporary_folder();
    if (folder.empty())
        return "";
    return folder + "/opening-" + std::to_string(std::hash<std::string>{}(document));
}

} // namespace

std::string leave_mark(const std::string &document) {
    const std::string path = mark_path(document);
    if (path.empty())
        return "";
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (file < 0)
        return "";
    close(file);
    return path;
}

bool mark_is_left(const std::string &mark) {
    for (int step = 0; step < steps; step++) {
        if (access(mark.c_str(), F_OK) != 0)
            return false;
        const timespec moment = {0, step_nanoseconds};
        nanosleep(&moment, nullptr);
    }
    return unlink(mark.c_str()) == 0;
}

bool take_mark(const std::string &document) {
    const std::string path = mark_path(document);
    return !path.empty() && unlink(path.c_str()) == 0;
}

} // namespace helpers
