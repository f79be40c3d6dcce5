#include "client/clean_command.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

#include "common/clean.h"

namespace client {

namespace {

// Asks at the terminal. Without one nobody says yes.
bool person_agrees(std::size_t count) {
    if (isatty(STDIN_FILENO) == 0)
        return false;
    std::printf("Remove %s? [y/N] ", count == 1 ? "this file" : "these files");
    std::fflush(stdout);
    const int answer = std::getchar();
    return answer == 'y' || answer == 'Y';
}

bool remove(const std::string &path) {
    if (common::discard(path))
        return true;
    std::fprintf(stderr, "quillon: %s: %s\n", path.c_str(), std::strerror(errno));
    return false;
}

} // namespace

int clean(const std::string &main, bool yes) {
    const std::vector<std::string> files = common::files_to_clean(main).files;
    if (files.empty()) {
        std::printf("There is nothing to remove for %s.\n", main.c_str());
        return 0;
    }
    for (const std::string &path : files)
        std::puts(path.c_str());
    if (!yes && !person_agrees(files.size()))
        return 0;
    int status = 0;
    for (const std::string &path : files)
        if (!remove(path))
            status = 1;
    return status;
}

} // namespace client
