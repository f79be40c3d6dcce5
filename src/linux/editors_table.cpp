#include "linux/editors_table.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace quillon {

namespace {

constexpr std::size_t largest_table = 1024 * 1024;

std::vector<std::string> parts(std::string_view text, char separator) {
    std::vector<std::string> found;
    while (true) {
        const std::size_t end = std::min(text.find(separator), text.size());
        found.emplace_back(text.substr(0, end));
        if (end == text.size())
            return found;
        text.remove_prefix(end + 1);
    }
}

std::vector<std::string> words(std::string text) {
    std::replace(text.begin(), text.end(), '\t', ' ');
    std::vector<std::string> found = parts(text, ' ');
    std::erase(found, "");
    return found;
}

bool has(const std::vector<std::string> &list, const std::string &word) {
    return std::find(list.begin(), list.end(), word) != list.end();
}

bool on_x11() {
    const char *const wayland = std::getenv("WAYLAND_DISPLAY");
    const char *const display = std::getenv("DISPLAY");
    return !(wayland && *wayland) && display && *display;
}

std::string read_table(const std::string &path) {
    std::string text;
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0)
        return text;
    char block[8192];
    ssize_t count;
    while (text.size() < largest_table && (count = ::read(file, block, sizeof block)) > 0)
        text.append(block, static_cast<std::size_t>(count));
    ::close(file);
    return text;
}

// Contents/Resources of the bundle whose Contents/<folder> holds this program.
std::string resources_folder() {
    char path[4096];
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
    std::string folder(path, length > 0 ? static_cast<std::size_t>(length) : 0);
    for (int level = 0; level < 2; level++)
        folder.resize(std::min(folder.find_last_of('/'), folder.size()));
    return folder + "/Resources/";
}

std::string own_support_folder() {
    const char *const data = std::getenv("XDG_DATA_HOME");
    const char *const home = std::getenv("HOME");
    return (data && *data == '/' ? std::string(data) : std::string(home ? home : "") + "/.local/share") +
           "/Quillon/";
}

const EditorRow *row_of_leaf(const std::vector<EditorRow> &rows, const std::string &path) {
    constexpr std::string_view entry = ".desktop";
    std::string leaf = path.substr(path.find_last_of('/') + 1);
    const bool is_entry = leaf.ends_with(entry);
    if (is_entry)
        leaf.resize(leaf.size() - entry.size());
    for (const EditorRow &row : rows)
        if (has(is_entry ? row.desktop_ids : row.programs, leaf) && (!row.x11_only || on_x11()))
            return &row;
    return nullptr;
}

} // namespace

std::vector<EditorRow> ParseEditorRows(std::string_view text) {
    std::vector<EditorRow> rows;
    for (std::string &line : parts(text, '\n')) {
        std::erase(line, '\r');
        if (line.find_first_not_of(" \t") == std::string::npos || line[line.find_first_not_of(" \t")] == '#')
            continue;
        const std::vector<std::string> fields = parts(line, '|');
        if (fields.size() < 3)
            continue;
        EditorRow row;
        row.programs = words(fields[0]);
        row.desktop_ids = words(fields[1]);
        row.at_line = words(fields[2]);
        row.plain = words(fields.size() > 3 ? fields[3] : "%f");
        const std::vector<std::string> flags = words(fields.size() > 4 ? fields[4] : "");
        row.terminal = has(flags, "terminal");
        row.x11_only = has(flags, "x11");
        if (row.plain.empty())
            row.plain = {"%f"};
        if (!row.at_line.empty())
            rows.push_back(std::move(row));
    }
    return rows;
}

const std::vector<EditorRow> &EditorRows() {
    static const std::vector<EditorRow> rows =
        ParseEditorRows(read_table(own_support_folder() + "editors.table") + "\n" +
                        read_table(resources_folder() + "editors.table"));
    return rows;
}

const EditorRow *FindEditorRow(const std::vector<EditorRow> &rows, const std::string &path) {
    if (const EditorRow *const row = row_of_leaf(rows, path))
        return row;
    char *const canonical = ::realpath(path.c_str(), nullptr);
    const EditorRow *const row = canonical ? row_of_leaf(rows, canonical) : nullptr;
    std::free(canonical);
    return row;
}

int IsTableEditor(const char *posix_path) {
    return FindEditorRow(EditorRows(), posix_path) != nullptr;
}

} // namespace quillon
