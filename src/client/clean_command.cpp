#include "client/clean_command.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include "common/document_record.h"
#include "common/host_files.h"
#include "common/path_forms.h"
#include "common/trash.h"

namespace client {

namespace {

bool holds(const std::vector<std::string> &paths, const std::string &path) {
    return std::find(paths.begin(), paths.end(), path) != paths.end();
}

// Returns PATH without its extension.
std::string stem_of(const std::string &path) {
    const std::size_t dot = path.rfind('.'), slash = path.rfind('/');
    return dot == std::string::npos || (slash != std::string::npos && dot < slash) ? path
                                                                                   : path.substr(0, dot);
}

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
    const bool desktop = std::getenv("DISPLAY") || std::getenv("WAYLAND_DISPLAY");
    if ((desktop && common::move_to_trash(path)) || unlink(path.c_str()) == 0)
        return true;
    std::fprintf(stderr, "quillon: %s: %s\n", path.c_str(), std::strerror(errno));
    return false;
}

} // namespace

std::vector<std::string> files_to_clean(const std::string &main) {
    const common::DocumentRecord record = common::read_document_record(main);
    std::vector<std::string> stems;
    for (const std::string &output : record.outputs)
        stems.push_back(stem_of(output));
    std::vector<std::string> files;
    for (const std::string &path : record.written) {
        // What a run reads before it writes it may have been the person's own.
        const bool own =
            holds(record.carried, path) && !holds(stems, stem_of(path)) && !path.ends_with(".aux");
        if (path != main && !own && !holds(record.outputs, path) && !holds(files, path) &&
            common::is_regular_file(path))
            files.push_back(path);
    }
    return files;
}

int clean(const std::string &main, bool yes) {
    const std::vector<std::string> files = files_to_clean(main);
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
