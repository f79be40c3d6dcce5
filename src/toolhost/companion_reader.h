// Finds the errors and warnings in what BibTeX, biber and MakeIndex print.
#ifndef QUILLON_TOOLHOST_COMPANION_READER_H
#define QUILLON_TOOLHOST_COMPANION_READER_H

#include <string>
#include <string_view>

#include "toolhost/problem_list.h"

namespace toolhost {

class CompanionReader {
  public:
    // FOLDER is the working folder of the run, SOURCES a further one where it finds what it reads (empty for
    // none); both are absolute POSIX paths.
    explicit CompanionReader(std::string folder, std::string sources = {});

    // Takes the next piece of the output. Pieces may be cut anywhere.
    void feed(std::string_view bytes);
    // Takes what is left, and reads MakeIndex's transcript when it holds messages. Nothing is fed after it.
    void finish();

    const ProblemList &problems() const { return problems_; }

  private:
    void line(std::string_view text);
    bool place(std::string_view text);
    void index_line(std::string_view text);
    void biber_line(std::string_view text);
    void add_of_biber(ProblemKind kind, std::string_view text);
    void end_warning();
    std::string path(std::string_view name) const;

    std::string folder_, sources_;
    std::string line_;
    std::string before_;    // the line before, which may be the text of an error
    std::string warning_;   // BibTeX's, whose place may follow
    std::string auxiliary_; // what the program was started for: an .aux file or biber's control file
    std::string database_;  // the last one that biber has found
    int databases_ = 0;     // how many
    std::string index_log_;
    bool index_speaks_ = false; // MakeIndex's transcript holds a message
    ProblemKind index_kind_ = ProblemKind::warning;
    std::string index_file_; // of the message whose text follows; empty when there is none
    long index_line_ = 0;
    ProblemList problems_;
};

} // namespace toolhost

#endif
