// The problems of a run: what the engine complained about, where, and in what words.
#ifndef QUILLON_TOOLHOST_PROBLEM_LIST_H
#define QUILLON_TOOLHOST_PROBLEM_LIST_H

#include <string>
#include <string_view>

namespace toolhost {

// A reference is an undefined reference or citation; a box is one that is overfull or underfull.
enum class ProblemKind { error, warning, reference, box };
constexpr int problem_kinds = 4;

class ProblemList {
  public:
    // The list keeps so many problems, and so many bytes of their records; what is more is only counted. A
    // text keeps so many bytes.
    static constexpr long most_kept = 100000;
    static constexpr std::size_t most_bytes = std::size_t{48} << 20;
    static constexpr std::size_t longest_text = 1000;

    // Adds a problem. FILE is an absolute POSIX path, LINE is 0 where it is not known. TEXT is cut at the end
    // of a character, and its control bytes become blanks.
    void add(ProblemKind kind, std::string_view file, long line, std::string_view text);

    // Adds the problems of OTHER. A reference whose key a reference of this list names already is left out.
    void add_those_of(const ProblemList &other);

    // How many problems of the kind there were, those that are not kept among them.
    long count(ProblemKind kind) const { return counts_[static_cast<int>(kind)]; }
    // The records: kind ('e', 'w', 'r' or 'b'), line, NUL, file, NUL, text, NUL. An empty file is that of the
    // record before.
    const std::string &records() const { return records_; }
    // Writes the records into a new file of the transcripts folder, which is the caller's. Returns its
    // absolute path; empty when there are none, or when it cannot be written.
    std::string write() const;

  private:
    std::string records_;
    std::string last_file_;
    long kept_ = 0;
    long counts_[problem_kinds] = {};
};

} // namespace toolhost

#endif
