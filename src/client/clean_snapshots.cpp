#include "client/clean_snapshots.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "common/places.h"

namespace client {

namespace files = std::filesystem;

int clean_snapshots() {
    std::error_code error;
    std::vector<files::path> paths;
    for (const auto &entry : files::directory_iterator(common::snapshots_folder(), error))
        paths.push_back(entry.path());
    int snapshots = 0, status = 0;
    for (const files::path &path : paths) {
        const bool is_snapshot = files::is_directory(files::symlink_status(path, error));
        files::remove_all(path, error);
        if (error) {
            std::fprintf(stderr, "quillon: %s: %s\n", path.c_str(), error.message().c_str());
            status = 1;
        } else if (is_snapshot) {
            snapshots++;
        }
    }
    std::printf("Removed %d snapshot%s of preambles.\n", snapshots, snapshots == 1 ? "" : "s");
    return status;
}

} // namespace client
