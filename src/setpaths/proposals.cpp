#include "setpaths/proposals.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <string_view>
#include <unistd.h>
#include <vector>

#include "common/places.h"
#include "setpaths/distribution.h"

namespace setpaths {

namespace {

// What the ids of Quillon's own desktop entries begin with: they open no document for Quillon.
constexpr std::string_view own_entries = "org.quillon.";

std::string variable(const char *name, const std::string &fallback) {
    const char *const value = std::getenv(name);
    return value && *value ? value : fallback;
}

std::vector<std::string> data_folders() {
    std::vector<std::string> folders = {common::data_folder()};
    for (const std::string &folder : split_paths(variable("XDG_DATA_DIRS", "/usr/local/share:/usr/share")))
        folders.push_back(folder);
    return folders;
}

std::string entry_path(const std::string &id) {
    for (const std::string &folder : data_folders()) {
        const std::string path = folder + "/applications/" + id;
        if (access(path.c_str(), R_OK) == 0)
            return path;
    }
    return {};
}

// Returns the first installed desktop entry of another program that FILE names for the MIME type in the group
// GROUP, empty when there is none.
std::string listed(const std::string &file, std::string_view group, const std::string &mime_type) {
    std::ifstream lines(file);
    std::string line;
    bool inside = false;
    while (std::getline(lines, line)) {
        if (line.starts_with('[')) {
            inside = line == group;
            continue;
        }
        if (!inside || !line.starts_with(mime_type + "="))
            continue;
        std::string rest = line.substr(mime_type.size() + 1);
        while (!rest.empty()) {
            const std::size_t end = std::min(rest.find(';'), rest.size());
            const std::string id = rest.substr(0, end);
            rest.erase(0, end + 1);
            if (id.empty() || id.starts_with(own_entries))
                continue;
            if (const std::string path = entry_path(id); !path.empty())
                return path;
        }
    }
    return {};
}

} // namespace

std::string default_entry(const std::string &mime_type) {
    std::vector<std::string> files;
    files.push_back(common::config_folder() + "/mimeapps.list");
    for (const std::string &folder : split_paths(variable("XDG_CONFIG_DIRS", "/etc/xdg")))
        files.push_back(folder + "/mimeapps.list");
    for (const std::string &folder : data_folders())
        files.push_back(folder + "/applications/mimeapps.list");
    for (const std::string &file : files)
        if (const std::string path = listed(file, "[Default Applications]", mime_type); !path.empty())
            return path;
    for (const std::string &folder : data_folders())
        if (const std::string path =
                listed(folder + "/applications/mimeinfo.cache", "[MIME Cache]", mime_type);
            !path.empty())
            return path;
    return {};
}

} // namespace setpaths
