#include "setpaths/settings_place.h"

#include <cerrno>
#include <climits>
#include <unistd.h>

#include "common/path_forms.h"

namespace setpaths {

std::string place_of(std::string path) {
    char target[PATH_MAX];
    for (int links = 0; links < 40; links++) {
        const ssize_t length = readlink(path.c_str(), target, sizeof target);
        if (length <= 0)
            break;
        path = common::absolute_path(common::folder_above(path), {target, static_cast<std::size_t>(length)});
    }
    return path;
}

bool write_whole(int file, const std::string &text) {
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = write(file, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        written += static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace setpaths
