#include "common/clean.h"

#include <algorithm>
#include <cstdlib>
#include <unistd.h>

#include "common/document_record.h"
#include "common/host_files.h"
#include "common/trash.h"

namespace common {

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

} // namespace

FilesToClean files_to_clean(const std::string &main) {
    const DocumentRecord record = read_document_record(main);
    FilesToClean found;
    found.known = !record.read.empty() || !record.written.empty();
    std::vector<std::string> stems;
    for (const std::string &output : record.outputs)
        stems.push_back(stem_of(output));
    for (const std::string &path : record.written) {
        // What a run reads before it writes it may have been the person's own.
        const bool own =
            holds(record.carried, path) && !holds(stems, stem_of(path)) && !path.ends_with(".aux");
        if (path != main && !own && !holds(record.outputs, path) && !holds(found.files, path) &&
            is_regular_file(path))
            found.files.push_back(path);
    }
    return found;
}

bool goes_to_trash(const std::string &path) {
    return (std::getenv("DISPLAY") || std::getenv("WAYLAND_DISPLAY")) && trash_takes(path);
}

bool discard(const std::string &path) {
    return goes_to_trash(path) ? move_to_trash(path) : unlink(path.c_str()) == 0;
}

} // namespace common
