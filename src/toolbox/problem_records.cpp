#include "toolbox/problem_records.h"

#include <charconv>

namespace quillon {

// Takes the field up to the next NUL. Returns 0 when there is no NUL.
static int take_field(std::string_view *rest, std::string_view *field) {
    const std::size_t end = rest->find('\0');
    if (end == std::string_view::npos)
        return 0;
    *field = rest->substr(0, end);
    rest->remove_prefix(end + 1);
    return 1;
}

int next_problem_record(std::string_view *rest, ProblemRecord *record) {
    std::string_view head, file, after = *rest;
    if (!take_field(&after, &head) || !take_field(&after, &file) || !take_field(&after, &record->text) ||
        head.empty() || !problem_kind_word(head[0]))
        return 0;
    std::int32_t line = 0;
    std::from_chars(head.data() + 1, head.data() + head.size(), line);
    record->kind = head[0];
    record->line = line < 0 ? 0 : line;
    if (!file.empty())
        record->file = file;
    *rest = after;
    return record->file.empty() ? 0 : 1;
}

const char *problem_kind_word(char kind) {
    switch (kind) {
    case 'e':
        return "error";
    case 'w':
        return "warning";
    case 'r':
        return "reference";
    case 'b':
        return "box";
    default:
        return nullptr;
    }
}

} // namespace quillon
