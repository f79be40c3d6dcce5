#include "common/editors_table.h"

#include <algorithm>
#include <cstdlib>

#include "common/host_files.h"
#include "common/path_forms.h"
#include "common/places.h"

namespace common {

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

const EditorRow *row_of_leaf(const std::vector<EditorRow> &rows, const std::string &path) {
    constexpr std::string_view entry = ".desktop";
    std::string leaf = leaf_of(path);
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
        ParseEditorRows(read_file(support_folder() + "/editors.table", largest_table) + "\n" +
                        read_file(above_own_program(2) + "/Resources/editors.table", largest_table));
    return rows;
}

const EditorRow *FindEditorRow(const std::vector<EditorRow> &rows, const std::string &path) {
    if (const EditorRow *const row = row_of_leaf(rows, path))
        return row;
    const std::string canonical = canonical_path(path);
    return canonical == path ? nullptr : row_of_leaf(rows, canonical);
}

int IsTableEditor(const char *posix_path) {
    return FindEditorRow(EditorRows(), posix_path) != nullptr;
}

} // namespace common
