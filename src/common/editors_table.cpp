#include "common/editors_table.h"

#include <cstdlib>

namespace common {

namespace {

bool on_x11() {
    const char *const wayland = std::getenv("WAYLAND_DISPLAY");
    const char *const display = std::getenv("DISPLAY");
    return !(wayland && *wayland) && display && *display;
}

bool holds_here(const EditorRow &row) {
    return !row.x11_only || on_x11();
}

} // namespace

std::vector<EditorRow> ParseEditorRows(std::string_view text) {
    std::vector<EditorRow> rows;
    for (std::vector<Words> &fields : ParseTable(text)) {
        if (fields.size() < 3 || fields[2].empty())
            continue;
        fields.resize(5);
        EditorRow row;
        row.programs = fields[0];
        row.desktop_ids = fields[1];
        row.at_line = fields[2];
        row.plain = fields[3];
        row.terminal = Contains(fields[4], "terminal");
        row.x11_only = Contains(fields[4], "x11");
        for (const std::string &flag : fields[4])
            if (constexpr std::string_view from = "from="; flag.starts_with(from))
                row.first_version = std::atoi(flag.c_str() + from.size());
        for (Words *const arguments : {&row.at_line, &row.plain})
            if (!HoldsCode(*arguments, 'f'))
                arguments->push_back("%f");
        rows.push_back(std::move(row));
    }
    return rows;
}

const std::vector<EditorRow> &EditorRows() {
    static const std::vector<EditorRow> rows = ParseEditorRows(TableText("editors.table"));
    return rows;
}

const EditorRow *FindEditorRow(const std::vector<EditorRow> &rows, const std::string &path) {
    return FindRow(rows, path, holds_here);
}

int IsTableEditor(const char *posix_path) {
    return FindEditorRow(EditorRows(), posix_path) != nullptr;
}

} // namespace common
