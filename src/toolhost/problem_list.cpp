#include "toolhost/problem_list.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <functional>
#include <set>
#include <unistd.h>

#include "toolhost/transcript.h"

namespace toolhost {

namespace {

constexpr std::string_view kind_letters = "ewrb";

struct Record {
    ProblemKind kind = ProblemKind::error;
    long line = 0;
    std::string_view file, text;
};

// Takes the next record of REST. FILE of RECORD stays where it names none. False at the end.
bool take_record(std::string_view &rest, Record &record) {
    std::string_view fields[3];
    for (std::string_view &field : fields) {
        const std::size_t end = rest.find('\0');
        if (end == std::string_view::npos)
            return false;
        field = rest.substr(0, end);
        rest.remove_prefix(end + 1);
    }
    record.kind = static_cast<ProblemKind>(kind_letters.find(fields[0][0]));
    record.line = std::atol(fields[0].data() + 1);
    if (!fields[1].empty())
        record.file = fields[1];
    record.text = fields[2];
    return true;
}

// Returns the first word of TEXT that stands between quotes, of whatever kind.
std::string_view quoted_word(std::string_view text) {
    const std::size_t begin = text.find_first_of("`'\"", text.starts_with("I didn't") ? 8 : 0);
    if (begin == std::string_view::npos)
        return {};
    const std::size_t end = text.find(text[begin] == '"' ? '"' : '\'', begin + 1);
    return end == std::string_view::npos ? std::string_view() : text.substr(begin + 1, end - begin - 1);
}

} // namespace

void ProblemList::add(ProblemKind kind, std::string_view file, long line, std::string_view text) {
    counts_[static_cast<int>(kind)]++;
    if (kept_ >= most_kept || records_.size() >= most_bytes)
        return;
    kept_++;
    file = file.substr(0, file.find('\0'));
    records_ += kind_letters[static_cast<std::size_t>(kind)];
    records_ += std::to_string(line);
    records_ += '\0';
    if (file != last_file_) {
        records_ += file;
        last_file_ = file;
    }
    records_ += '\0';
    std::size_t end = text.size();
    if (end > longest_text)
        for (end = longest_text; end > longest_text - 4 && (text[end] & 0xC0) == 0x80;)
            end--;
    for (const char c : text.substr(0, end))
        records_ += static_cast<unsigned char>(c) < ' ' || c == 127 ? ' ' : c;
    records_ += '\0';
}

void ProblemList::add_those_of(const ProblemList &other) {
    std::set<std::string, std::less<>> named;
    Record record;
    for (std::string_view rest = records_; take_record(rest, record);)
        if (record.kind == ProblemKind::reference)
            named.emplace(quoted_word(record.text));
    long left[problem_kinds];
    std::copy(std::begin(other.counts_), std::end(other.counts_), left);
    for (std::string_view rest = other.records_; take_record(rest, record);) {
        left[static_cast<int>(record.kind)]--;
        if (record.kind != ProblemKind::reference || !named.contains(quoted_word(record.text)))
            add(record.kind, record.file, record.line, record.text);
    }
    // What the other list has only counted.
    for (int kind = 0; kind < problem_kinds; kind++)
        counts_[kind] += left[kind];
}

std::string ProblemList::write() const {
    std::string path;
    const int file = records_.empty() ? -1 : make_transcript_file("problems-", &path);
    if (file < 0)
        return {};
    std::string_view rest = records_;
    while (!rest.empty()) {
        const ssize_t count = ::write(file, rest.data(), rest.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        rest.remove_prefix(static_cast<std::size_t>(count));
    }
    close(file);
    // A list of which a part is missing would name wrong files.
    if (rest.empty())
        return path;
    unlink(path.c_str());
    return {};
}

} // namespace toolhost
