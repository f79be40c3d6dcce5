#include "toolhost/run_parser.h"

#include "common/host_files.h"
#include "common/path_forms.h"

namespace toolhost {

namespace {

constexpr std::size_t longest_line = std::size_t{1} << 20;
constexpr int most_looks = 50000;
constexpr std::size_t longest_message = 1000;
constexpr std::size_t deepest = 2000;
constexpr const char *in_text = "("; // stands among the files for a parenthesis of a text

bool digit(char c) {
    return c >= '0' && c <= '9';
}

// Returns the number at the head of TEXT, 0 when there is none or it has more than ten digits. LENGTH becomes
// the number of digits read.
long number_at(std::string_view text, std::size_t &length) {
    long number = 0;
    for (length = 0; length < text.size() && digit(text[length]); length++) {
        if (length > 9)
            return 0;
        number = number * 10 + (text[length] - '0');
    }
    return number;
}

// Returns NAME without the quotes that engines print around names, or parts of names, with blanks.
std::string unquoted(std::string_view name) {
    std::string bare;
    for (const char c : name)
        if (c != '"')
            bare += c;
    return bare;
}

} // namespace

RunParser::RunParser(std::string folder, std::string main)
    : folder_(std::move(folder)), main_(std::move(main)), messages_(main_) {}

void RunParser::feed(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t end = bytes.find('\n');
        line_.append(bytes.substr(0, end));
        if (end != std::string_view::npos || line_.size() >= longest_line) {
            const std::string whole = std::move(line_);
            line_.clear();
            counted_ = 0;
            open_pages_ = 0;
            line(whole);
        }
        if (end == std::string_view::npos) {
            count_open_pages();
            return;
        }
        bytes.remove_prefix(end + 1);
    }
}

// Counts the pages in the line that has not ended yet, since an engine may print all its pages in one line.
void RunParser::count_open_pages() {
    for (; counted_ + 1 < line_.size(); counted_++)
        if (line_[counted_] == '[' && digit(line_[counted_ + 1]) && !in_error_ && passed_over_ == 0)
            open_pages_++;
}

void RunParser::finish() {
    const std::string whole = std::move(line_);
    line_.clear();
    counted_ = 0;
    open_pages_ = 0;
    if (!whole.empty())
        line(whole);
    messages_.finish();
}

// Returns the file that the engine reads now, as an absolute path.
std::string RunParser::current_file() const {
    for (auto file = files_.rbegin(); file != files_.rend(); ++file)
        if (!file->empty())
            return *file;
    return main_;
}

void RunParser::line(std::string_view text) {
    if (text.ends_with('\r'))
        text.remove_suffix(1);
    if (messages_.continues(text) || report(text) || error_line(text) || file_line_error(text))
        return;
    if (passed_over_ > 0) {
        passed_over_--;
        return;
    }
    if (in_error_ ? error_without_place(text) : message(text))
        return;
    if (!in_error_)
        scan_files(text);
}

// Takes a line that begins a warning or tells of a bad box, and scans what the engine printed behind it. The
// line below one of a horizontal box quotes the document, and so does that below the heading of a runaway.
bool RunParser::message(std::string_view text) {
    if (text.starts_with("Runaway ") && text.ends_with('?')) {
        passed_over_ = 1;
        return true;
    }
    const std::size_t taken = MessageReader::may_begin(text) ? messages_.begin(text, current_file()) : 0;
    if (taken == 0)
        return false;
    constexpr std::string_view boxes[] = {"Overfull \\hbox", "Underfull \\hbox", "Loose \\hbox",
                                          "Tight \\hbox"};
    for (const std::string_view box : boxes)
        if (text.starts_with(box))
            passed_over_ = 1;
    scan_files(text.substr(taken));
    return true;
}

// Takes a line that ends an error for which no line number comes: one outside of any file, whose text goes on
// below, or one about a file that is missing, after which the engine may read another.
bool RunParser::error_without_place(std::string_view text) {
    if (text.starts_with("<*> ")) {
        messages_.error_has_no_place();
        in_error_ = false;
        passed_over_ = 1;
        return true;
    }
    in_error_ = !text.starts_with("Enter file name: ");
    return in_error_;
}

// Reads a line that reports the output or a dumped format. False for any other line.
bool RunParser::report(std::string_view text) {
    constexpr std::string_view written = "Output written on ";
    constexpr std::string_view dumped = "Beginning to dump on file ";
    if (text.starts_with(written)) {
        const std::size_t end = text.rfind(" (");
        if (end != std::string_view::npos && end > written.size())
            output_name_ = unquoted(text.substr(written.size(), end - written.size()));
        return true;
    }
    if (text.starts_with(dumped)) {
        dumped_format_ = unquoted(text.substr(dumped.size()));
        return true;
    }
    if (text.starts_with("No pages of output")) {
        said_no_output_ = true;
        return true;
    }
    return false;
}

// Reads an error in the form "! MESSAGE" and, some lines later, "l.NUMBER TEXT" with the rest of the source
// line below it. False when TEXT is neither line.
bool RunParser::error_line(std::string_view text) {
    if (text.starts_with("! ")) {
        in_error_ = !text.starts_with("!  ==> ");
        error_text_ = text.substr(2, longest_message);
        if (in_error_)
            messages_.begin_error(text.substr(2), current_file(), 0);
        return true;
    }
    if (!in_error_ || !text.starts_with("l."))
        return false;
    std::size_t length = 0;
    const long number = number_at(text.substr(2), length);
    if (number == 0)
        return false;
    note_error(current_file(), number, error_text_);
    messages_.place_error(current_file(), number);
    in_error_ = false;
    passed_over_ = 1;
    return true;
}

// Reads an error in the form "FILE:NUMBER: MESSAGE". False for any other line.
bool RunParser::file_line_error(std::string_view text) {
    for (std::size_t colon = text.find(':'); colon != std::string_view::npos;
         colon = text.find(':', colon + 1)) {
        std::size_t length = 0;
        const long number = number_at(text.substr(colon + 1), length);
        const std::string_view after = text.substr(colon + 1 + length);
        if (colon == 0 || number == 0 || !after.starts_with(": ") || looks_++ > most_looks)
            continue;
        const std::string file = common::absolute_path(folder_, unquoted(text.substr(0, colon)));
        if (!common::is_regular_file(file))
            continue;
        error_text_ = after.substr(2, longest_message);
        note_error(file, number, error_text_);
        in_error_ = !after.starts_with(":  ==> ");
        if (in_error_)
            messages_.begin_error(after.substr(2), file, number);
        return true;
    }
    return false;
}

void RunParser::note_error(const std::string &file, long number, std::string_view message) {
    last_error_ = {file, number, std::string(message)};
    if (!first_error_.known())
        first_error_ = last_error_;
}

// Follows the files that "(NAME" opens and ")" closes, and counts the pages, "[NUMBER". A parenthesis that
// opens nothing like a file belongs to a text, and is closed in the same line or not at all.
void RunParser::scan_files(std::string_view text) {
    bool texts = false;
    for (std::size_t i = 0; i < text.size(); i++) {
        if (text[i] == '(') {
            i += open_file(text.substr(i + 1));
            texts = texts || (!files_.empty() && files_.back() == in_text);
        } else if (text[i] == ')' && !files_.empty()) {
            files_.pop_back();
        } else if (text[i] == '[' && i + 1 < text.size() && digit(text[i + 1])) {
            pages_++;
        }
    }
    if (texts)
        std::erase(files_, in_text);
}

// Opens the file that TEXT, what follows a "(", begins with. Returns the length of its name, 0 when there is
// no such file. A name may hold blanks, so the longest that exists is taken.
std::size_t RunParser::open_file(std::string_view text) {
    std::size_t taken = 0;
    std::string found;
    if (text.starts_with('"')) {
        const std::size_t end = text.find('"', 1);
        const std::string file = end == std::string_view::npos
                                     ? std::string()
                                     : common::absolute_path(folder_, std::string(text.substr(1, end - 1)));
        if (!file.empty() && looks_++ < most_looks && common::is_regular_file(file)) {
            found = file;
            taken = end + 1;
        }
    }
    constexpr std::string_view ends = " )([{<";
    int candidates = 0;
    bool looks_like_a_name = false;
    const bool bare = !text.empty() && text[0] != '"' && ends.find(text[0]) == std::string_view::npos;
    for (std::size_t end = 1; bare && end <= text.size() && end <= 4096 && candidates < 64; end++) {
        looks_like_a_name = looks_like_a_name || text[end - 1] == '.' || text[end - 1] == '/';
        if (end < text.size() && ends.find(text[end]) == std::string_view::npos)
            continue;
        candidates++;
        if (!looks_like_a_name || looks_ >= most_looks)
            continue;
        looks_++;
        const std::string file = common::absolute_path(folder_, std::string(text.substr(0, end)));
        if (!common::is_regular_file(file))
            continue;
        found = file;
        taken = end;
        if (text[0] == '/' || end == text.size() || text[end] != ' ')
            break;
    }
    if (found.empty() &&
        text.substr(0, text.find_first_of(ends)).find_first_of("./") == std::string_view::npos)
        found = in_text;
    if (files_.size() < deepest)
        files_.push_back(found);
    return taken;
}

} // namespace toolhost
