#include "common/trash.h"

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/path_forms.h"
#include "common/places.h"

namespace common {

namespace {

constexpr int most_names = 1000; // of one file

std::string trash_folder() {
    return data_folder() + "/Trash";
}

bool make_trash(const std::string &trash) {
    return make_private_folder(trash) && make_private_folder(trash + "/files") &&
           make_private_folder(trash + "/info");
}

// Makes the note of a file in the trash, which reserves NAME there. False with errno set when there is one.
bool reserve(const std::string &note, const std::string &path) {
    const int file = open(note.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (file < 0)
        return false;
    char date[32] = "";
    const std::time_t now = std::time(nullptr);
    std::tm parts;
    if (localtime_r(&now, &parts))
        std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &parts);
    const std::string text = "[Trash Info]\nPath=" + file_uri(path).substr(std::string("file://").size()) +
                             "\nDeletionDate=" + date + "\n";
    const bool written = write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    if (close(file) == 0 && written)
        return true;
    unlink(note.c_str());
    errno = EIO;
    return false;
}

} // namespace

bool trash_takes(const std::string &path) {
    const std::string trash = trash_folder();
    struct stat file, place;
    return make_trash(trash) && lstat(path.c_str(), &file) == 0 &&
           stat((trash + "/files").c_str(), &place) == 0 && file.st_dev == place.st_dev &&
           access((trash + "/files").c_str(), W_OK) == 0 && access((trash + "/info").c_str(), W_OK) == 0;
}

bool move_to_trash(const std::string &path) {
    const std::string trash = trash_folder(), leaf = leaf_of(path);
    if (!make_trash(trash))
        return false;
    for (int number = 1; number <= most_names; number++) {
        const std::string name = number == 1 ? leaf : leaf + "." + std::to_string(number);
        const std::string note = trash + "/info/" + name + ".trashinfo";
        if (!reserve(note, path)) {
            if (errno == EEXIST)
                continue;
            return false;
        }
        const std::string place = trash + "/files/" + name;
        if (access(place.c_str(), F_OK) != 0 && std::rename(path.c_str(), place.c_str()) == 0)
            return true;
        const bool taken = access(place.c_str(), F_OK) == 0;
        unlink(note.c_str());
        if (!taken)
            return false;
    }
    return false;
}

} // namespace common
