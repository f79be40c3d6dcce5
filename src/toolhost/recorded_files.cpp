#include "toolhost/recorded_files.h"

#include <algorithm>
#include <unordered_set>

#include "common/path_forms.h"

namespace toolhost {

namespace {

bool holds(const std::vector<std::string> &paths, const std::string &path) {
    return std::find(paths.begin(), paths.end(), path) != paths.end();
}

bool take_head(std::string_view &line, std::string_view head) {
    if (!line.starts_with(head))
        return false;
    line.remove_prefix(head.size());
    return true;
}

} // namespace

bool RecordedFiles::wrote(const std::string &path) const {
    return holds(written, path);
}

bool RecordedFiles::carries(const std::string &path) const {
    return holds(carried, path);
}

RecordedFiles read_recorder_list(std::string_view text) {
    RecordedFiles files;
    std::unordered_set<std::string> read, written;
    std::string folder = "/";
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (take_head(line, "PWD ")) {
            folder = line;
        } else if (take_head(line, "INPUT ")) {
            std::string path = common::absolute_path(folder, std::string(line));
            if (read.insert(path).second)
                files.read.push_back(std::move(path));
        } else if (take_head(line, "OUTPUT ")) {
            std::string path = common::absolute_path(folder, std::string(line));
            if (!written.insert(path).second)
                continue;
            if (read.contains(path))
                files.carried.push_back(path);
            files.written.push_back(std::move(path));
        }
    }
    return files;
}

} // namespace toolhost
