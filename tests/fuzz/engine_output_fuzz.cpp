// What an engine prints: errors, files, pages and names are those of a plain reading, however the output is
// cut into pieces; line ends come out as one byte; a person's echo is left out once.
#include <sys/mman.h>
#include <unistd.h>

#include "client/live_output.h"
#include "common/host_files.h"
#include "common/path_forms.h"
#include "fuzz/fuzz.h"
#include "support/temporary_home.h"
#include "toolhost/results.h"
#include "toolhost/run_parser.h"
#include "toolhost/transcript.h"

namespace quillon::test {

const std::vector<std::string> fuzz_words = {"\n",
                                             "\r\n",
                                             "(",
                                             ")",
                                             "(./main.tex",
                                             "(./my part.tex",
                                             "(\"./my part.tex\"",
                                             " (./sub/deep.tex ",
                                             "(./none.tex",
                                             "(x",
                                             "[1]",
                                             " [2{map}]",
                                             "[",
                                             "7",
                                             "\n! Undefined control sequence.\n",
                                             "\n!  ==> Fatal error.\n",
                                             "\nl.12 \\x\n   y\n",
                                             "\nl.",
                                             "\n./main.tex:7: Wrong.\n",
                                             "\n\"my part.tex\":9: Wrong.\n",
                                             "\nsub/deep.tex:3:  ==> Fatal.\n",
                                             ":12: ",
                                             "\nOverfull \\hbox (3pt too wide)\n",
                                             "\nUnderfull \\vbox\n",
                                             "\nOutput written on \"my part.pdf\" (2 pages).\n",
                                             "\nOutput written on ",
                                             "\nBeginning to dump on file a.fmt\n",
                                             "\nNo pages of output.\n",
                                             "99999999999",
                                             "\"",
                                             " ",
                                             "<{",
                                             std::string(1, '\0'),
                                             "\n<*> main.tex\n   \n",
                                             "? "};
const int fuzz_runs = 2500;

namespace {

using Lines = std::vector<std::string>;

const TemporaryHome &home() {
    static const TemporaryHome made;
    static const bool filled = [] {
        for (const char *const name : {"main.tex", "my part.tex", "sub/deep.tex", "x", "12"})
            made.file(std::string("work/") + name);
        return true;
    }();
    static_cast<void>(filled);
    return made;
}

// The files there are, as the names in the output can name them.
std::string existing(const std::string &name) {
    static const Lines files = {"main.tex", "my part.tex", "sub/deep.tex", "x", "12"};
    static const std::string folder = home().path("work/");
    std::string bare = name.substr(0, name.find('\0'));
    if (bare.starts_with("/"))
        return common::is_regular_file(bare) ? name : "";
    if (bare.find("..") != std::string::npos || bare.find("//") != std::string::npos ||
        bare.find("/./") != std::string::npos) {
        const std::string path = common::absolute_path(home().path("work"), name);
        return common::is_regular_file(path) ? path : "";
    }
    while (bare.starts_with("./"))
        bare.erase(0, 2);
    return std::count(files.begin(), files.end(), bare) ? common::absolute_path(home().path("work"), name)
                                                        : "";
}

std::string without_quotes(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), '"'), text.end());
    return text;
}

// Reads the output line by line, with every rule where it is needed.
class PlainReader {
  public:
    Lines open = {};
    std::string output, dumped, message, files;
    toolhost::ErrorPlace first, last;
    bool no_pages = false, in_error = false;
    int pages = 0, passed_over = 0;

    void line(std::string text) {
        if (!text.empty() && text.back() == '\r')
            text.pop_back();
        if (is_report(text) || is_error(text) || is_place(text))
            return;
        if (passed_over > 0)
            passed_over--;
        else if (in_error)
            leave_error(text);
        else if (text.rfind("Overfull \\", 0) == 0 || text.rfind("Underfull \\", 0) == 0)
            passed_over = text.find("full \\hbox") != std::string::npos ? 1 : 0;
        else
            follow(text);
    }

  private:
    void leave_error(const std::string &text) {
        if (text.rfind("<*> ", 0) == 0)
            passed_over = 1;
        in_error = text.rfind("<*> ", 0) != 0;
    }

    bool is_report(const std::string &text) {
        if (text.rfind("Output written on ", 0) == 0) {
            const std::size_t end = text.rfind(" (");
            if (end != std::string::npos && end > 18)
                output = without_quotes(text.substr(18, end - 18));
            return true;
        }
        if (text.rfind("Beginning to dump on file ", 0) == 0) {
            dumped = without_quotes(text.substr(26));
            return true;
        }
        no_pages = no_pages || text.rfind("No pages of output", 0) == 0;
        return text.rfind("No pages of output", 0) == 0;
    }

    // The number at AT, 0 when there is none or it is too long.
    static long number(const std::string &text, std::size_t at, std::size_t &end) {
        for (end = at; end < text.size() && text[end] >= '0' && text[end] <= '9';)
            end++;
        return end == at || end - at > 10 ? 0 : std::stol(text.substr(at, end - at));
    }

    bool is_error(const std::string &text) {
        if (text.rfind("! ", 0) == 0) {
            in_error = text.rfind("!  ==> ", 0) != 0;
            message = text.substr(2, 1000);
            return true;
        }
        std::size_t end = 0;
        const long found = in_error && text.rfind("l.", 0) == 0 ? number(text, 2, end) : 0;
        if (found == 0)
            return false;
        std::string file = home().path("work/main.tex");
        for (const std::string &name : open)
            file = name.empty() ? file : name;
        note(file, found, message);
        in_error = false;
        passed_over = 1;
        return true;
    }

    bool is_place(const std::string &text) {
        for (std::size_t colon = 1; colon < text.size(); colon++) {
            std::size_t end = 0;
            if (text[colon] != ':' || number(text, colon + 1, end) == 0 || text.compare(end, 2, ": ") != 0)
                continue;
            const std::string file = existing(without_quotes(text.substr(0, colon)));
            if (file.empty())
                continue;
            message = text.substr(end + 2, 1000);
            note(file, number(text, colon + 1, end), message);
            in_error = text.compare(end, 7, ":  ==> ") != 0;
            return true;
        }
        return false;
    }

    void note(const std::string &file, long where, const std::string &what) {
        last = {file, where, what};
        if (first.line == 0)
            first = last;
    }

    void follow(const std::string &text) {
        for (std::size_t at = 0; at < text.size(); at++) {
            if (text[at] == '(')
                at += enter(text.substr(at + 1));
            else if (text[at] == ')' && !open.empty())
                open.pop_back();
            else if (text[at] == '[' && at + 1 < text.size() &&
                     std::isdigit(static_cast<unsigned char>(text[at + 1])))
                pages++;
        }
        std::erase(open, "text");
    }

    std::size_t enter(const std::string &text) {
        std::size_t length = 0;
        std::string file;
        if (!text.empty() && text[0] == '"') {
            const std::size_t end = text.find('"', 1);
            file = end == std::string::npos ? "" : existing(text.substr(1, end - 1));
            length = file.empty() ? 0 : end + 1;
        } else {
            // The longest name that is there; what follows a name is a blank or one of these.
            int candidates = 0;
            for (std::size_t end = text.find_first_of(" )([{<"); end != 0 && candidates < 64;
                 end = text.find_first_of(" )([{<", end + 1)) {
                const std::string name = text.substr(0, end);
                candidates++;
                if (name.empty() || name.size() > 4096)
                    break;
                if (name.find_first_of("./") != std::string::npos && !existing(name).empty()) {
                    file = existing(name);
                    length = name.size();
                    if (name[0] == '/' || end == std::string::npos || text[end] != ' ')
                        break;
                }
                if (end == std::string::npos)
                    break;
            }
        }
        // A parenthesis before a word that could be no file is one of a text, and closed in its line or
        // never.
        const std::string word = text.substr(0, text.find_first_of(" )([{<"));
        if (file.empty() && word.find_first_of("./") == std::string::npos)
            file = "text";
        if (open.size() < 2000)
            open.push_back(file);
        return length;
    }
};

Lines lines_of(const std::string &input) {
    Lines lines;
    for (std::size_t at = 0; at < input.size();) {
        const std::size_t end = std::min(input.find('\n', at), input.size());
        lines.push_back(input.substr(at, end - at));
        at = end + 1;
    }
    return lines;
}

bool same(const toolhost::ErrorPlace &a, const toolhost::ErrorPlace &b) {
    return a.file == b.file && a.line == b.line && a.message == b.message;
}

void check_parser(const std::string &input) {
    PlainReader expected;
    for (const std::string &line : lines_of(input))
        expected.line(line);
    for (const std::size_t piece : {std::size_t{1}, std::size_t{13}, input.size() + 1}) {
        toolhost::RunParser parser(home().path("work"), home().path("work/main.tex"));
        int pages = 0;
        for (std::size_t at = 0; at < input.size(); at += piece) {
            parser.feed(std::string_view(input).substr(at, piece));
            pages = std::max(pages, parser.pages());
        }
        parser.finish();
        require(parser.output_name() == expected.output && parser.dumped_format() == expected.dumped &&
                    parser.said_no_output() == expected.no_pages,
                "another output is named");
        require(same(parser.first_error(), expected.first) && same(parser.last_error(), expected.last),
                "another error is found");
        require(parser.pages() == expected.pages && pages >= expected.pages,
                "the pages are counted otherwise");
        require(parser.first_error().message.size() <= 1000, "a message is too long");
    }
}

void check_line_ends(const std::string &input) {
    std::string expected, out;
    for (std::size_t i = 0; i < input.size(); i++)
        if (input[i] != '\n')
            expected += input[i];
        else if (i == 0 || input[i - 1] != '\r')
            expected += '\r';
    toolhost::LineEnds ends;
    for (std::size_t at = 0; at < input.size(); at += 7)
        ends.convert(std::string_view(input).substr(at, 7), out);
    require(out == expected, "line ends come out otherwise");
}

// The record of edit_command: a number, a line end, a name, and one more byte.
void check_edit_record(const std::string &input) {
    static const int file = ::memfd_create("record", MFD_CLOEXEC);
    for (const std::string &text : {input, "12\n" + input + "\n"}) {
        require(::ftruncate(file, 0) == 0 &&
                    ::pwrite(file, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()),
                "the record cannot be written");
        const toolhost::ErrorPlace place = toolhost::read_edit_record(file, home().path("work"));
        const std::size_t end = text.find('\n');
        if (end == std::string::npos || text.size() < end + 3) {
            require(!place.known() && place.file.empty(), "a record is read that is not whole");
            continue;
        }
        std::string name = text.substr(end + 1, text.size() - end - 2);
        if (name.size() > 1 && name[0] == '"' && name.back() == '"')
            name = name.substr(1, name.size() - 2);
        const std::string path = common::absolute_path(home().path("work"), name);
        require(place.line == std::atol(text.c_str()), "a record has another line");
        require(place.file == path || (place.file == path + ".tex" && common::is_regular_file(place.file)),
                "a record has another file");
    }
}

void check_echo(const std::string &input) {
    client::LiveOutput output;
    const std::string typed = input.substr(0, input.size() / 3);
    output.expect_echo(typed);
    std::string shown;
    for (std::size_t at = 0; at < input.size(); at += 5)
        shown += output.tool_text(std::string_view(input).substr(at, 5));
    require(shown == input.substr(typed.size()), "an echo is left out otherwise");
    output.transcript(true);
    require(output.console_text("x").empty() == true, "a transcript is shown twice");
    output.transcript(false);
    std::string lines = input;
    std::replace(lines.begin(), lines.end(), '\r', '\n');
    require(output.console_text(input) == lines, "console text is shown otherwise");
}

} // namespace

void fuzz_one(const std::string &input) {
    check_parser(input);
    check_line_ends(input);
    check_edit_record(input);
    if (!input.empty())
        check_echo(input);
}

} // namespace quillon::test
