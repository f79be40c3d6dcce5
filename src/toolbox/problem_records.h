// The form in which a tool hands the problems of its run over: kind ('e' error, 'w' warning, 'r' undefined
// reference or citation, 'b' bad box), line (0 when it is not known), NUL, file, NUL, text, NUL. An empty
// file is that of the record before.
#ifndef QUILLON_TOOLBOX_PROBLEM_RECORDS_H
#define QUILLON_TOOLBOX_PROBLEM_RECORDS_H

#include <cstdint>
#include <string_view>

namespace quillon {

struct ProblemRecord {
    char kind = 0;
    std::int32_t line = 0;
    // Views into the records. A NUL stands behind each.
    std::string_view file; // an absolute POSIX path; it stays where a record names none
    std::string_view text;
};

// Reads the record at the head of REST and takes it away: 1, or 0 at the end and before what is no record.
int next_problem_record(std::string_view *rest, ProblemRecord *record);
// The word for a kind: "error", "warning", "reference" or "box"; null for any other character.
const char *problem_kind_word(char kind);

} // namespace quillon

#endif
