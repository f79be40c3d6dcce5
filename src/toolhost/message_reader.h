// Finds the errors, warnings and bad boxes among the lines that a TeX engine prints. The parser of the run
// hands each line over and says which file is read.
#ifndef QUILLON_TOOLHOST_MESSAGE_READER_H
#define QUILLON_TOOLHOST_MESSAGE_READER_H

#include <string>
#include <string_view>

#include "toolhost/problem_list.h"

namespace toolhost {

class MessageReader {
  public:
    // MAIN, an absolute POSIX path, stands for problems that belong to no other file.
    explicit MessageReader(std::string main);

    // Takes a line that goes on with the message before. False for any other line, which ends that message.
    bool continues(std::string_view line);
    // True when the line may begin a message, as its first bytes say. A cheap look before `begin`.
    static bool may_begin(std::string_view line);
    // Takes a line that begins a message about FILE, the file that is read. Returns how many of its bytes
    // belong to the message, 0 when it begins none.
    std::size_t begin(std::string_view line, const std::string &file);

    // An error begins, with its text. FILE is the one that is read; LINE is 0 when it is still to come.
    void begin_error(std::string_view text, const std::string &file, long line);
    // The place of the error that began last: a file and a line, or that it has none.
    void place_error(const std::string &file, long line);
    void error_has_no_place();
    // Nothing follows.
    void finish();

    const ProblemList &problems() const { return problems_; }

  private:
    // A message whose end has not been seen.
    struct Message {
        bool open = false;
        bool grows = false;  // lines may follow that go on with its text
        bool placed = false; // of an error: its file and line are known
        ProblemKind kind = ProblemKind::warning;
        std::string file;
        long line = 0;
        std::string text;
    };

    bool grow(Message &message, std::string_view line);
    void end_warning();
    void end_error();
    bool begin_warning(std::string_view line, const std::string &file);
    std::size_t begin_box(std::string_view line, const std::string &file);
    void add(ProblemKind kind, const std::string &file, long line, std::string_view text);

    std::string main_;
    ProblemList problems_;
    Message warning_;
    Message error_;
    int context_ = 0; // how many lines may still show where the warning arose
    std::string last_error_file_;
    long last_error_line_ = -1; // of the error that was added last
};

} // namespace toolhost

#endif
