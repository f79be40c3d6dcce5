#include "background/snapshot_search.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <string_view>

#include "common/path_forms.h"

namespace background {

namespace {

namespace files = std::filesystem;

constexpr std::size_t most_folders = 3000;

// Takes the next line of TEXT away and returns it.
std::string_view take_line(std::string_view &text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

// Returns what stands in LINE between BEFORE and the last AFTER, empty when they do not.
std::string_view between(std::string_view line, std::string_view before, std::string_view after) {
    const std::size_t start = line.find(before), end = line.rfind(after);
    if (start == std::string_view::npos || end == std::string_view::npos || end < start + before.size())
        return {};
    return line.substr(start + before.size(), end - start - before.size());
}

// Collects folders and names.
class Searches {
  public:
    Searches(std::string folder, std::vector<std::string> own, toolhost::SnapshotGround *ground)
        : folder_(std::move(folder)), own_(std::move(own)), ground_(ground) {}

    // Takes a line of the engine's. What kind of file is searched for stands in the line before. Formats,
    // settings and databases are not for us.
    std::string take(std::string_view line) {
        if (line.starts_with("kdebug:kpse_find_file: searching for ")) {
            const std::string_view name = between(line, "searching for ", " of type ");
            const std::string_view kind = line.substr(line.rfind(" of type "));
            counts_ = !kind.starts_with(" of type fmt") && !is_own(name);
            return counts_ && name.find_first_of(" \t") != std::string_view::npos
                       ? "it looks for a file with a blank in its name"
                       : "";
        }
        const bool many = line.starts_with("kdebug:start generic search(");
        if (!counts_ || (!many && !line.starts_with("kdebug:start search(")))
            return {};
        const std::string_view names =
            many ? between(line, "files=[", "], must_exist=") : between(line, "file=", ", must_exist=");
        for (std::size_t start = 0, end; start < names.size(); start = end + 1) {
            end = std::min(names.find(' ', start), names.size());
            if (std::string why = take_name(std::string(names.substr(start, end - start))); !why.empty())
                return why;
        }
        return take_path(std::string(between(line, ", path=", ")")));
    }
    std::string finish() {
        for (const std::string &path : relative_folders_)
            for (const std::string &name : names_)
                add_name(path, name);
        for (const std::string &name : names_)
            if (name.find('/') != std::string::npos) {
                if (name.front() == '/')
                    add_name("", name);
                for (const std::string &folder : std::set<std::string>(folders_))
                    folders_.insert(folder + "/" + common::folder_above(name));
            }
        for (const std::string &folder : folders_)
            ground_->places.emplace_back(folder, toolhost::snapshot_stamp(folder));
        for (auto &[folder, names] : looked_) {
            toolhost::LookedFor looked = {folder, {names.begin(), names.end()}};
            const std::string found = toolhost::found_names(looked);
            ground_->names.emplace_back(std::move(looked), found);
        }
        return folders_.size() > most_folders ? "it is looked for in too many folders" : "";
    }

  private:
    bool is_own(std::string_view name) const {
        return std::any_of(own_.begin(), own_.end(),
                           [name](const std::string &head) { return name.starts_with(head); });
    }
    std::string take_name(const std::string &name) {
        if (name.find('|') != std::string::npos)
            return "it reads what a program prints";
        if (!name.empty())
            names_.insert(name);
        return {};
    }
    // Adds that NAME was looked for below FOLDER.
    void add_name(const std::string &folder, const std::string &name) {
        const std::string path = name.starts_with('/') ? name : common::absolute_path(folder, name);
        looked_[common::folder_above(path)].insert(toolhost::folded(common::leaf_of(path)));
    }
    std::string take_path(const std::string &path) {
        if (!paths_.insert(path).second)
            return {};
        for (std::string element : common::split_list(path)) {
            if (element.starts_with("!!") || element.empty())
                continue;
            bool below = false;
            while (element.size() > 1 && element.ends_with('/')) {
                below = element.ends_with("//");
                element.pop_back();
                if (below)
                    break;
            }
            while (element.size() > 1 && element.ends_with('/'))
                element.pop_back();
            if (element.find("//", 1) != std::string::npos)
                return "its search path has folders in the middle of an element";
            if (!element.starts_with('/') && below)
                return "its search path has all folders below a relative one";
            add_element(element, below);
        }
        return {};
    }
    void add_element(const std::string &element, bool below) {
        const std::string path = element == "." ? folder_ : common::absolute_path(folder_, element);
        add_folder(path, !element.starts_with('/'));
        std::error_code error;
        if (!below)
            return;
        const auto options = files::directory_options::follow_directory_symlink |
                             files::directory_options::skip_permission_denied;
        for (files::recursive_directory_iterator entry(path, options, error), end; !error && entry != end;
             entry.increment(error))
            if (entry->is_directory(error) && folders_.size() <= most_folders)
                add_folder(entry->path(), false);
            else if (folders_.size() > most_folders)
                return;
    }
    // A folder that the runs write into changes its stamp with each of them; there single names are noted.
    void add_folder(const std::string &path, bool relative) {
        if (relative || path == folder_ || path.starts_with(folder_ + "/"))
            relative_folders_.insert(path);
        else
            folders_.insert(path);
    }

    std::string folder_;
    std::vector<std::string> own_;
    bool counts_ = false;
    toolhost::SnapshotGround *ground_;
    std::set<std::string> names_, paths_, folders_, relative_folders_;
    std::map<std::string, std::set<std::string>> looked_;
};

} // namespace

std::string add_searches(const std::string &errors, const std::string &folder,
                         const std::vector<std::string> &own, toolhost::SnapshotGround *ground) {
    Searches searches(folder, own, ground);
    std::string_view rest = errors;
    while (!rest.empty()) {
        const std::string_view line = take_line(rest);
        if (line.find("runpopen") != std::string_view::npos)
            return "it reads what a program prints";
        if (line.starts_with("kpathsea: Running"))
            return "it makes a font";
        if (std::string why = searches.take(line); !why.empty())
            return why;
    }
    return searches.finish();
}

} // namespace background
