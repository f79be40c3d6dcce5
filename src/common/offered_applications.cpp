#include "common/offered_applications.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>

#include "common/editors_table.h"
#include "common/places.h"
#include "common/text.h"
#include "common/viewers_table.h"

namespace common {

namespace {

using Words = std::vector<std::string>;

constexpr const char *own_entries = "org.quillon.";

const Words &types_of(Use use) {
    static const Words types[] = {{},
                                  {"text/x-tex", "text/plain"},
                                  {"application/pdf"},
                                  {"application/postscript", "image/x-eps"},
                                  {"application/x-dvi"}};
    return types[static_cast<int>(use)];
}

bool holds(const Words &words, const std::string &word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

// The lists in which the desktop says what opens a type, the most important one first.
Words association_files() {
    const char *const desktops = std::getenv("XDG_CURRENT_DESKTOP");
    const char *const shared = std::getenv("XDG_CONFIG_DIRS");
    Words folders = {config_folder()}, files;
    for (const std::string &folder : parts_of(shared && *shared ? shared : "/etc/xdg", ':'))
        folders.push_back(folder);
    for (const std::string &folder : entry_folders())
        folders.push_back(folder);
    for (const std::string &folder : folders) {
        for (std::string desktop : parts_of(desktops ? desktops : "", ':')) {
            for (char &c : desktop)
                c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
            files.push_back(folder + "/" + desktop + "-mimeapps.list");
        }
        files.push_back(folder + "/mimeapps.list");
    }
    return files;
}

// What the desktop's lists say of one type, each as paths of entries.
struct Associations {
    Words defaults, added, removed;
};

Associations associations_of(const std::string &type) {
    Associations found;
    for (const std::string &file : association_files()) {
        std::ifstream lines(file);
        std::string line;
        Words *group = nullptr;
        while (std::getline(lines, line)) {
            if (line.starts_with('[')) {
                const std::string name = trimmed(line);
                group = name == "[Default Applications]"   ? &found.defaults
                        : name == "[Added Associations]"   ? &found.added
                        : name == "[Removed Associations]" ? &found.removed
                                                           : nullptr;
            } else if (const std::size_t equals = line.find('=');
                       group && equals != std::string::npos && trimmed(line.substr(0, equals)) == type) {
                for (const std::string &id : parts_of(trimmed(line.substr(equals + 1)), ';'))
                    if (const std::string path = find_desktop_entry(id); !path.empty())
                        group->push_back(path);
            }
        }
    }
    return found;
}

bool is_editor(const DesktopEntry &entry) {
    return IsTableEditor(entry.path.c_str()) || holds(entry.categories, "TextEditor");
}

// How likely the entry is the one for the use: 0 is the likeliest. The desktop's own choices come first, then
// the rows of the table in their order, then what says of itself that it is one. From `unlikely` on an entry
// is not proposed, and with `unfit` it is none at all.
enum {
    most_defaults = 5,
    first_in_table = 2 * most_defaults,
    in_no_table = 300,
    in_terminal = 300,
    unlikely = 1000,
    unfit = 2000
};

// Returns the place of the row for the entry at PATH, at most 255; -1 when there is none.
template <typename Row> int place_in_table(const std::vector<Row> &rows, const std::string &path) {
    const Row *const row = FindRow(rows, path, [](const Row &) { return true; });
    return row ? static_cast<int>(std::min<std::ptrdiff_t>(row - rows.data(), 255)) : -1;
}

int rank(const DesktopEntry &entry, Use use, const std::vector<Associations> &associations) {
    const Words &types = types_of(use);
    const bool edits = is_editor(entry);
    int fallback = unfit;
    if (use != Use::editor && edits)
        return unfit;
    for (std::size_t i = 0; i < types.size(); i++) {
        const Associations &known = associations[i];
        const int number = static_cast<int>(i);
        const auto chosen = std::find(known.defaults.begin(), known.defaults.end(), entry.path);
        if (chosen != known.defaults.end() && (use != Use::editor || edits))
            return number * most_defaults + static_cast<int>(std::min<std::ptrdiff_t>(
                                                chosen - known.defaults.begin(), most_defaults - 1));
        if (holds(known.added, entry.path) ||
            (holds(entry.types, types[i]) && !holds(known.removed, entry.path)))
            fallback = std::min(fallback, unlikely + number);
    }
    if (fallback == unfit)
        return unfit;
    const int place = use == Use::editor ? place_in_table(EditorRows(), entry.path)
                                         : place_in_table(ViewerRows(), entry.path);
    if (place < 0 && !(use == Use::editor ? edits : holds(entry.categories, "Viewer")))
        return fallback;
    return (place < 0 ? in_no_table : first_in_table + place) + (entry.terminal ? in_terminal : 0);
}

struct Ranked {
    int rank;
    const DesktopEntry *entry;
};

std::vector<Ranked> ranked(Use use, const std::vector<DesktopEntry> &entries) {
    std::vector<Associations> associations;
    for (const std::string &type : types_of(use))
        associations.push_back(associations_of(type));
    std::vector<Ranked> found;
    for (const DesktopEntry &entry : entries)
        if (const int place = rank(entry, use, associations); place < unfit)
            found.push_back({place, &entry});
    std::stable_sort(found.begin(), found.end(),
                     [](const Ranked &a, const Ranked &b) { return a.rank < b.rank; });
    return found;
}

} // namespace

std::vector<DesktopEntry> installed_applications() {
    namespace fs = std::filesystem;
    std::vector<DesktopEntry> entries;
    std::set<std::string> seen;
    for (const std::string &folder : entry_folders()) {
        std::error_code error;
        fs::recursive_directory_iterator files(folder, error);
        for (; !error && files != fs::recursive_directory_iterator(); files.increment(error)) {
            const std::string path = files->path().string();
            std::string id = path.substr(folder.size() + 1);
            std::replace(id.begin(), id.end(), '/', '-');
            DesktopEntry entry;
            if (id.ends_with(".desktop") && seen.insert(id).second && read_desktop_entry(path, entry) &&
                entry.shown && !id.starts_with(own_entries))
                entries.push_back(std::move(entry));
        }
    }
    std::sort(entries.begin(), entries.end(), [](const DesktopEntry &a, const DesktopEntry &b) {
        const int order = std::strcoll(a.name.c_str(), b.name.c_str());
        return order != 0 ? order < 0 : a.path < b.path;
    });
    return entries;
}

std::vector<DesktopEntry> applications_for(Use use, const std::vector<DesktopEntry> &entries) {
    if (use == Use::any)
        return entries;
    std::vector<DesktopEntry> fit;
    for (const Ranked &one : ranked(use, entries))
        fit.push_back(*one.entry);
    return fit;
}

std::string proposed_application(Use use, const std::vector<DesktopEntry> &entries) {
    const std::vector<Ranked> fit = ranked(use, entries);
    return fit.empty() || fit[0].rank >= unlikely ? "" : fit[0].entry->path;
}

} // namespace common
