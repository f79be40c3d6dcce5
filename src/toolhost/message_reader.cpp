#include "toolhost/message_reader.h"

#include <algorithm>

namespace toolhost {

namespace {

constexpr std::size_t npos = std::string_view::npos;
constexpr std::size_t longest_head = 160;
constexpr int longest_context = 40; // lines
constexpr std::size_t longest_growth = std::size_t{1} << 20;
constexpr std::string_view last_words = "Emergency stop.";

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// Returns the number at the head of TEXT; 0 when there is none or it has more than nine digits.
long leading_number(std::string_view text) {
    long number = 0;
    for (std::size_t i = 0; i < text.size() && is_digit(text[i]); i++) {
        if (i > 8)
            return 0;
        number = number * 10 + (text[i] - '0');
    }
    return number;
}

// Returns the number behind the last MARK in TEXT, 0 when there is none.
long number_behind(std::string_view text, std::string_view mark) {
    const std::size_t at = text.rfind(mark);
    return at == npos ? 0 : leading_number(text.substr(at + mark.size()));
}

std::string_view without_blanks(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(' ');
    if (begin == npos)
        return {};
    return text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

// Returns how many bytes of LINE stand before what goes on with a message of a package: blanks, or the
// package's name in parentheses and blanks. 0 when the line does not go on with one.
std::size_t continuation(std::string_view line) {
    constexpr std::size_t most_name = 80, bare_blanks = 10, blanks_behind_name = 4;
    std::size_t name = 0;
    if (line.starts_with('(')) {
        name = line.find(')');
        if (name == npos || name > most_name || line.find('(', 1) < name)
            return 0;
        name++;
    }
    const std::size_t end = line.find_first_not_of(' ', name);
    return end != npos && end - name >= (name > 0 ? blanks_behind_name : bare_blanks) ? end : 0;
}

// Returns where the text of a warning in the form "Package NAME Warning: TEXT" begins, 0 for any other line.
std::size_t package_warning(std::string_view line) {
    constexpr std::string_view mark = " Warning: ";
    constexpr std::string_view speakers[] = {"LaTeX", "Package ", "Class ", "Module "};
    if (std::none_of(std::begin(speakers), std::end(speakers),
                     [line](std::string_view speaker) { return line.starts_with(speaker); }))
        return 0;
    const std::size_t at = line.substr(0, longest_head).find(mark);
    return at == npos || line.find(':') < at ? 0 : at + mark.size();
}

// True for a warning that only says that others were given before.
bool sums_up(std::string_view text) {
    return text.starts_with("There were undefined ") || text.starts_with("There were multiply-defined ");
}

bool is_undefined_reference(std::string_view text) {
    constexpr std::string_view beginnings[] = {"Reference `", "Citation `", "Hyper reference `",
                                               "Citation '"};
    if (text.starts_with("The following entry could not be found"))
        return true;
    return text.find(" undefined") != npos &&
           std::any_of(std::begin(beginnings), std::end(beginnings),
                       [text](std::string_view words) { return text.starts_with(words); });
}

// True for a warning of an engine itself, which is one line.
bool engine_warning(std::string_view line) {
    constexpr std::string_view heads[] = {"pdfTeX warning",
                                          "warning  (",
                                          "xdvipdfmx:warning: ",
                                          "dvipdfmx:warning: ",
                                          "Missing character: There is no ",
                                          "\\end occurred "};
    return std::any_of(std::begin(heads), std::end(heads),
                       [line](std::string_view head) { return line.starts_with(head); });
}

bool names_missing_destination(std::string_view line) {
    return line.find("has been referenced but does not exist") != npos ||
           line.find("unreferenced destination with ") != npos;
}

// True for a file that the run before has written: what is wrong in it comes from the document.
bool is_auxiliary(std::string_view file) {
    return file.ends_with(".aux") || file.ends_with(".toc") || file.ends_with(".lof") ||
           file.ends_with(".lot") || file.ends_with(".out");
}

} // namespace

MessageReader::MessageReader(std::string main) : main_(std::move(main)) {}

void MessageReader::add(ProblemKind kind, const std::string &file, long line, std::string_view text) {
    problems_.add(kind, line == 0 && is_auxiliary(file) ? main_ : file, line, text);
}

// Appends what the line goes on with, and tells whether it did.
bool MessageReader::grow(Message &message, std::string_view line) {
    if (!message.grows)
        return false;
    const std::size_t head = continuation(line);
    message.grows = head > 0;
    if (head > 0 && message.text.size() <= longest_growth)
        message.text.append(" ").append(without_blanks(line.substr(head)));
    return head > 0;
}

bool MessageReader::continues(std::string_view line) {
    if (!warning_.open && !error_.grows)
        return false;
    if (error_.grows)
        return grow(error_, line);
    if (context_ > 0) {
        context_--;
        if (line.starts_with("l."))
            warning_.line = leading_number(line.substr(2));
        if (warning_.line == 0 && context_ > 0)
            return true;
        const bool taken = warning_.line > 0;
        end_warning();
        return taken;
    }
    if (grow(warning_, line))
        return true;
    end_warning();
    return false;
}

void MessageReader::end_warning() {
    if (!warning_.open)
        return;
    warning_.open = false;
    context_ = 0;
    if (warning_.line == 0)
        warning_.line = number_behind(warning_.text, "on input line ");
    add(warning_.kind, warning_.file, warning_.line, warning_.text);
}

// An engine that stops because of an error says so once more at the same place, which is left out.
void MessageReader::end_error() {
    if (!error_.open)
        return;
    error_.open = error_.grows = false;
    // What a person does is no problem of the document.
    if (error_.text == "Interruption.")
        return;
    if (error_.text == last_words && error_.file == last_error_file_ && error_.line == last_error_line_)
        return;
    add(ProblemKind::error, error_.file, error_.line, error_.text);
    last_error_file_ = error_.file;
    last_error_line_ = error_.line;
}

void MessageReader::begin_error(std::string_view text, const std::string &file, long line) {
    end_warning();
    // The error that the engine stops at has got no place of its own yet: it gets that of the last words.
    if (error_.open && !error_.placed && text == last_words) {
        if (line > 0)
            place_error(file, line);
        return;
    }
    end_error();
    const bool grows = text.find(" Error: ") != npos;
    error_ = {true, grows, line > 0, ProblemKind::error, file, line, std::string(text)};
}

void MessageReader::place_error(const std::string &file, long line) {
    if (error_.open && !error_.placed) {
        error_.file = file;
        error_.line = line;
    }
    end_error();
}

void MessageReader::error_has_no_place() {
    place_error(main_, 0);
}

bool MessageReader::may_begin(std::string_view line) {
    if (line.size() < 2)
        return false;
    switch (line[0]) {
    case 'L': // LaTeX, Loose
    case 'P': // Package
    case 'C': // Class
    case 'M': // Module, Missing character
    case 'O': // Overfull
    case 'U': // Underfull
    case 'T': // Tight
    case 'p': // pdfTeX
    case 'w': // warning
    case 'x': // xdvipdfmx
    case 'd': // dvipdfmx
        return true;
    case '(':
        return line[1] == '\\';
    case '!':
        return line[1] != ' ';
    default:
        return false;
    }
}

std::size_t MessageReader::begin(std::string_view line, const std::string &file) {
    if (const std::size_t taken = begin_box(line, file); taken > 0)
        return taken;
    if (line.starts_with("!pdfTeX error: ") || line.starts_with("!LuaTeX error: ") ||
        line.starts_with("!xdvipdfmx:fatal: ")) {
        begin_error(line.substr(1), file, 0);
        end_error();
        return line.size();
    }
    if (!line.starts_with('('))
        return begin_warning(line, file) ? line.size() : 0;
    const std::size_t end = std::min(line.find(')'), line.size());
    return begin_warning(line.substr(1, end - 1), file) ? std::min(end + 1, line.size()) : 0;
}

bool MessageReader::begin_warning(std::string_view line, const std::string &file) {
    const std::size_t text = package_warning(line);
    if (text == 0 && !engine_warning(line))
        return false;
    end_error();
    end_warning();
    warning_ = {};
    if (text > 0 && sums_up(line.substr(text)))
        return true;
    const bool reference =
        text > 0 ? is_undefined_reference(line.substr(text)) : names_missing_destination(line);
    const ProblemKind kind = reference ? ProblemKind::reference : ProblemKind::warning;
    warning_ = {true,
                text > 0,
                false,
                kind,
                text > 0 || line.starts_with("Missing") ? file : main_,
                text > 0 ? 0 : number_behind(line, " on line "),
                std::string(without_blanks(line))};
    if (line.starts_with("pdfTeX warning (ext4)")) {
        warning_.file = file;
        context_ = longest_context;
    }
    if (text == 0 && context_ == 0)
        end_warning();
    return true;
}

// The text of a bad box stands below its line; a vertical box has none, and while a page is made the engine
// goes on in the same line.
std::size_t MessageReader::begin_box(std::string_view line, const std::string &file) {
    constexpr std::string_view kinds[] = {"Overfull \\", "Underfull \\", "Loose \\", "Tight \\"};
    constexpr std::string_view page = " has occurred while \\output is active";
    if (std::none_of(std::begin(kinds), std::end(kinds),
                     [line](std::string_view kind) { return line.starts_with(kind); }))
        return 0;
    const std::size_t in_page = line.find(page);
    const std::size_t end = in_page == npos ? line.size() : in_page + page.size();
    const std::string_view text = line.substr(0, end);
    const long lines = number_behind(text, " at lines ");
    end_error();
    add(ProblemKind::box, file, lines > 0 ? lines : number_behind(text, " at line "), text);
    return end;
}

void MessageReader::finish() {
    end_error();
    end_warning();
}

} // namespace toolhost
