#include "helpers/hand_over.h"

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <functional>
#include <unistd.h>

#include "common/places.h"

namespace helpers {

namespace {

constexpr int steps = 50;
constexpr long step_nanoseconds = 20'000'000;

std::string mark_path(const std::string &document) {
    const std::string folder = common::temporary_folder();
    if (!common::make_private_folder(folder))
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
