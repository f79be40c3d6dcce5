#include "common/viewers_table.h"

#include <csignal>

namespace common {

std::vector<ViewerRow> ParseViewerRows(std::string_view text) {
    std::vector<ViewerRow> rows;
    for (std::vector<Words> &fields : ParseTable(text)) {
        if (fields.size() < 3)
            continue;
        fields.resize(7);
        ViewerRow row;
        row.programs = fields[0];
        row.desktop_ids = fields[1];
        row.show = fields[2];
        row.at_source = fields[3];
        row.links = fields[4];
        const Words &flags = fields[5];
        row.single = Contains(flags, "single");
        row.presents = Contains(flags, "presents");
        row.zathura = Contains(flags, "zathura");
        row.reread_signal = Contains(flags, "usr1") ? SIGUSR1 : Contains(flags, "hup") ? SIGHUP : 0;
        constexpr std::string_view evince = "evince=";
        for (const std::string &flag : flags)
            if (flag.starts_with(evince))
                row.evince.push_back(flag.substr(evince.size()));
        if (!HoldsCode(row.show, 'd') && !HoldsCode(row.show, 'u'))
            row.show.push_back("%d");
        if (fields[6].size() >= 4)
            row.reverse = fields[6];
        rows.push_back(std::move(row));
    }
    return rows;
}

const std::vector<ViewerRow> &ViewerRows() {
    static const std::vector<ViewerRow> rows = ParseViewerRows(TableText("viewers.table"));
    return rows;
}

const ViewerRow *FindViewerRow(const std::string &path) {
    return FindRow(ViewerRows(), path, [](const ViewerRow &) { return true; });
}

} // namespace common
