#include "tools/problems.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "front/front.h"
#include "tools/tool_call.h"

namespace quillon {

unsigned shown_problem_kinds = all_problem_kinds;
int current_problem = -1;

static constexpr std::size_t most_bytes = std::size_t{64} << 20;

// The records as the tool wrote them, and where each begins.
static char *records = nullptr;
static std::size_t records_size = 0;
static ProblemRecord *problems = nullptr;
static int kept = 0;

struct RunNumbers {
    long pages, kinds[problem_kind_count], milliseconds;
};
static RunNumbers numbers = {};
static int has_numbers = 0, has_summary = 0;

static void forget_problems() {
    std::free(records);
    std::free(problems);
    records = nullptr;
    problems = nullptr;
    records_size = 0;
    kept = 0;
    current_problem = -1;
}

// Reads the file into RECORDS. Returns 0 when it cannot be read or is too large.
static int read_records(const FSSpec *location) {
    std::int16_t reference = -1;
    if (FSpOpenDF(location, 'r', &reference) != noErr)
        return 0;
    std::size_t room = 0;
    OSErr error = noErr;
    while (error == noErr && records_size < most_bytes) {
        if (records_size == room) {
            room = room == 0 ? 65536 : 2 * room;
            char *const larger = static_cast<char *>(std::realloc(records, room));
            if (!larger)
                break;
            records = larger;
        }
        long count = static_cast<long>(room - records_size);
        error = FSRead(reference, &count, records + records_size);
        if (error == noErr || error == eofErr)
            records_size += static_cast<std::size_t>(count);
    }
    FSClose(reference);
    return error == eofErr;
}

// Finds the records in what was read. The list ends before what is no record.
static void find_records() {
    problems = static_cast<ProblemRecord *>(std::calloc(most_problems, sizeof *problems));
    std::string_view rest{records, records_size};
    ProblemRecord record;
    while (problems && kept < most_problems && next_problem_record(&rest, &record))
        problems[kept++] = record;
    records_size -= rest.size();
}

static int read_numbers(const AppleEvent *event) {
    char words[256];
    std::size_t size = 0;
    if (AEGetParamPtr(event, four("nums"), typeChar, words, sizeof words - 1, &size) != noErr ||
        size >= sizeof words)
        return 0;
    words[size] = '\0';
    RunNumbers read = {};
    if (std::sscanf(words, "%ld %ld %ld %ld %ld %ld", &read.pages, &read.kinds[0], &read.kinds[1],
                    &read.kinds[2], &read.kinds[3], &read.milliseconds) != 6)
        return 0;
    numbers = read;
    return 1;
}

void take_problems(const AppleEvent *event) {
    FSSpec file;
    const int has_file = AEGetParamPtr(event, four("prbs"), typeFSS, &file, sizeof file, nullptr) == noErr &&
                         is_transcript(&file);
    if (read_numbers(event)) {
        forget_problems();
        has_numbers = has_summary = 1;
        if (has_file && read_records(&file))
            find_records();
        if (front->problems_changed)
            front->problems_changed();
    }
    if (has_file)
        FSpDelete(&file);
}

int problem_count() {
    return kept;
}

const ProblemRecord &problem_at(int index) {
    return problems[index];
}

long problems_of_kind(int kind) {
    return numbers.kinds[kind];
}

int is_of_kinds(const ProblemRecord &problem, unsigned kinds) {
    const char *const kind = std::strchr(problem_kinds, problem.kind);
    return (kinds >> (kind - problem_kinds)) & 1;
}

std::string_view problem_records() {
    return {records, records_size};
}

void forget_run_summary() {
    has_summary = 0;
}

// Appends the number and its noun with a comma before it, unless the number is 0.
static void append_part(BoundedBuffer &line, long number, const char *one, const char *many) {
    if (number > 0)
        line.append_format("%s%ld %s", line.empty() ? "" : ", ", number, number == 1 ? one : many);
}

void command_summary(BoundedBuffer &line) {
    line.clear();
    if (has_summary)
        last_run_summary(line);
}

void last_run_summary(BoundedBuffer &line) {
    line.clear();
    if (!has_numbers)
        return;
    const long *const kinds = numbers.kinds;
    append_part(line, numbers.pages, "page", "pages");
    append_part(line, kinds[0], "error", "errors");
    append_part(line, kinds[2], "undefined reference", "undefined references");
    append_part(line, kinds[1], "warning", "warnings");
    append_part(line, kinds[3], "bad box", "bad boxes");
    const long tenths = (numbers.milliseconds + 50) / 100;
    const char *const comma = line.empty() ? "" : ", ";
    if (tenths < 600)
        line.append_format("%s%ld.%ld s", comma, tenths / 10, tenths % 10);
    else
        line.append_format("%s%ld min %ld s", comma, tenths / 600, tenths % 600 / 10);
}

} // namespace quillon
