#include "helpers/hand_over.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <functional>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "common/places.h"

namespace helpers {

namespace {

// Returns the beginning of the names of the sockets for DOCUMENT. The id of the process that waits follows
// it.
std::string name_prefix(const std::string &document) {
    return "opening-" + std::to_string(std::hash<std::string>{}(document)) + "-";
}

// Returns the address of the socket NAME in the folder that is open as FOLDER. The address names the folder
// by its descriptor, since the folder's path may be too long for an address.
sockaddr_un address_of(int folder, const std::string &name) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = "/proc/self/fd/" + std::to_string(folder) + "/" + name;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

int open_folder() {
    const std::string folder = common::temporary_folder();
    return common::make_private_folder(folder) ? open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)
                                               : -1;
}

} // namespace

WaitingPlace wait_for(const std::string &document) {
    WaitingPlace place;
    const int folder = open_folder();
    if (folder < 0)
        return place;
    const std::string name = name_prefix(document) + std::to_string(getpid());
    const sockaddr_un address = address_of(folder, name);
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (descriptor >= 0 &&
        bind(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0) {
        place.socket = descriptor;
        place.path = common::temporary_folder() + "/" + name;
    } else if (descriptor >= 0) {
        close(descriptor);
    }
    close(folder);
    return place;
}

bool is_taken_over(const WaitingPlace &place, int patience) {
    pollfd source = {place.socket, POLLIN, 0};
    while (poll(&source, 1, patience) < 0 && errno == EINTR) {
    }
    // From here on nobody finds the place. What was sent before can still be read.
    unlink(place.path.c_str());
    char word;
    return recv(place.socket, &word, sizeof word, MSG_DONTWAIT) > 0;
}

void take_over(const std::string &document) {
    const int folder = open_folder();
    DIR *const entries = folder >= 0 ? fdopendir(folder) : nullptr;
    if (!entries) {
        close(folder);
        return;
    }
    const std::string prefix = name_prefix(document);
    const int sender = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    while (const dirent *const entry = readdir(entries)) {
        const std::string name = entry->d_name;
        if (!name.starts_with(prefix))
            continue;
        const sockaddr_un address = address_of(folder, name);
        // A place whose process was killed refuses the word, and is removed.
        if (sendto(sender, "1", 1, MSG_DONTWAIT, reinterpret_cast<const sockaddr *>(&address),
                   sizeof address) < 0 &&
            errno == ECONNREFUSED)
            unlinkat(folder, name.c_str(), 0);
    }
    close(sender);
    closedir(entries);
}

} // namespace helpers
