// Reads what a TeX engine prints while it runs: its errors, its pages, and the files that it reads and
// writes.
#ifndef QUILLON_TOOLHOST_RUN_PARSER_H
#define QUILLON_TOOLHOST_RUN_PARSER_H

#include <string>
#include <string_view>
#include <vector>

#include "toolhost/message_reader.h"

namespace toolhost {

struct ErrorPlace {
    std::string file; // absolute
    long line = 0;
    std::string message; // what the engine said, without "! ", at most 1000 bytes
    // True when the place has a file and a line.
    bool known() const { return line > 0 && !file.empty(); }
};

class RunParser {
  public:
    // FOLDER is the working folder of the run. MAIN is the main file, which stands for errors outside any
    // other file. Both are absolute POSIX paths.
    RunParser(std::string folder, std::string main);

    // Takes the next piece of the output. Pieces may be cut anywhere.
    void feed(std::string_view bytes);
    // Takes a last line without a line end into account. Nothing is fed after it.
    void finish();

    // The names of the output file and of the dumped format, as the engine printed them but without quotes.
    // Empty when it printed none.
    const std::string &output_name() const { return output_name_; }
    const std::string &dumped_format() const { return dumped_format_; }
    // True when the engine said that it made no page.
    bool said_no_output() const { return said_no_output_; }
    // The first and the last error that has a place; not known() when there is none.
    const ErrorPlace &first_error() const { return first_error_; }
    const ErrorPlace &last_error() const { return last_error_; }
    // What the engine complained about; whole once nothing is fed any more.
    const ProblemList &problems() const { return messages_.problems(); }
    // The number of pages that were shipped out so far.
    int pages() const { return pages_ + open_pages_; }

  private:
    std::string current_file() const;
    void line(std::string_view text);
    void count_open_pages();
    bool report(std::string_view text);
    bool message(std::string_view text);
    bool error_without_place(std::string_view text);
    bool error_line(std::string_view text);
    bool file_line_error(std::string_view text);
    void note_error(const std::string &file, long number, std::string_view message);
    void scan_files(std::string_view text);
    std::size_t open_file(std::string_view text);

    std::string folder_;
    std::string main_;
    MessageReader messages_;
    std::string line_;
    std::vector<std::string> files_; // an empty entry for a parenthesis that names no file
    std::string output_name_;
    std::string dumped_format_;
    ErrorPlace first_error_;
    ErrorPlace last_error_;
    int pages_ = 0;
    int open_pages_ = 0;      // the pages in the line that has not ended
    std::size_t counted_ = 0; // how many bytes of that line were looked at for pages
    int looks_ = 0;           // how often the file system was asked for a file
    bool said_no_output_ = false;
    bool in_error_ = false;
    std::string error_text_; // the message of the error whose line number is still to come
    int passed_over_ = 0;    // how many of the next lines quote the document
};

} // namespace toolhost

#endif
