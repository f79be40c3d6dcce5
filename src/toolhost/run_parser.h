// What an engine says about its run, read from its output as it comes.
#ifndef QUILLON_TOOLHOST_RUN_PARSER_H
#define QUILLON_TOOLHOST_RUN_PARSER_H

#include <string>
#include <string_view>
#include <vector>

namespace toolhost {

struct ErrorPlace {
    std::string file; // absolute
    long line = 0;
    std::string message; // what the engine said, without "! "
    bool known() const { return line > 0 && !file.empty(); }
};

class RunParser {
  public:
    // FOLDER: the working folder; MAIN: the absolute path of the file that stands for errors outside any
    // other.
    RunParser(std::string folder, std::string main);

    void feed(std::string_view bytes);
    // The last, unfinished line counts too.
    void finish();

    // Names as the engine said them, without quotes; empty when it said none.
    const std::string &output_name() const { return output_name_; }
    const std::string &dumped_format() const { return dumped_format_; }
    bool said_no_output() const { return said_no_output_; }
    const ErrorPlace &first_error() const { return first_error_; }
    const ErrorPlace &last_error() const { return last_error_; }
    int pages() const { return pages_ + open_pages_; }
    // The file being read now, absolute.
    std::string current_file() const;
    // Whether the last line has begun and not ended.
    bool line_is_open() const { return !line_.empty(); }

  private:
    void line(std::string_view text);
    void count_open_pages();
    bool report(std::string_view text);
    bool error_line(std::string_view text);
    bool file_line_error(std::string_view text);
    void note_error(const std::string &file, long number, std::string_view message);
    void scan_files(std::string_view text);
    std::size_t open_file(std::string_view text);

    std::string folder_;
    std::string main_;
    std::string line_;
    std::vector<std::string> files_; // an empty entry for a parenthesis that names no file
    std::string output_name_;
    std::string dumped_format_;
    ErrorPlace first_error_;
    ErrorPlace last_error_;
    int pages_ = 0;
    int open_pages_ = 0;      // in the line that has not ended
    std::size_t counted_ = 0; // of its bytes
    int looks_ = 0;
    bool said_no_output_ = false;
    bool in_error_ = false;
    std::string error_text_; // the "! " line of the error that goes on
    int passed_over_ = 0;    // lines of quoted text still to come
};

} // namespace toolhost

#endif
