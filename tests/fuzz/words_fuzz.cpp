// Command lines: the client's words come out of the tool host as they were given, what a line says to an
// engine is what a plain reading finds, and the dispatcher looks at the first word alone.
#include <cstring>

#include "client/exec_words.h"
#include "events/handlers.h"
#include "fuzz/fuzz.h"
#include "jobs/tex_runs.h"
#include "support/temporary_home.h"
#include "toolhost/words.h"
#include "tools/tool_runs.h"
#include "viewers/quoting.h"

namespace quillon::test {

const std::vector<std::string> fuzz_words = {
    " ",       "\"",     "\t",         "\n",       "\r",     "\x1f",   "\x1e",         "\xca",
    "pdftex",  "pdf",    "etex ",      "elatex",   "dvips ", "bibtex", "mpost\v",      "makeindex ",
    "dvipdfm", "tex",    "-",          "--",       "-fmt",   "-fmt=",  " -jobname=x ", "-jobname ",
    "-ini",    "&plain", "\\input",    "*",        "-C",     "-f",     "--view",       "--edit",
    " -8bit ", " -x ",   " main.tex ", " -@ /tmp", " -@ ",   "'",      "$`\\",         std::string(1, '\0'),
    "\xC3\xA9"};
const int fuzz_runs = 3000;

namespace {

using Words = std::vector<std::string>;

constexpr unsigned char spaces[] = {31, 202, ' ', '_'};

bool is_blank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

std::string with_meanings(std::string word, unsigned char space) {
    std::string text;
    for (const char c : word)
        if (c != '"')
            text += c == static_cast<char>(space) ? ' ' : c == 30 ? ':' : c;
    return text;
}

// The line is cut where a blank stands behind an even number of quotes.
Words expected_words(const std::string &line, unsigned char space) {
    Words words;
    std::string word;
    int quotes = 0;
    for (std::size_t at = 0; at <= line.size(); at++) {
        if (at < line.size() && (quotes % 2 == 1 || !is_blank(line[at]))) {
            quotes += line[at] == '"' ? 1 : 0;
            word += line[at];
            continue;
        }
        if (!word.empty())
            words.push_back(with_meanings(word, space));
        word.clear();
    }
    return words;
}

std::string undashed(const std::string &word) {
    const std::size_t dashes = word.rfind("--", 0) == 0 ? 2 : word.rfind("-", 0) == 0 ? 1 : 0;
    return dashes == 0 || word.size() < 2 ? "" : word.substr(dashes);
}

// The first word that is no option, no value of one, no format and no TeX command; without a "*" before it.
std::string expected_file(Words words) {
    static const std::string with_value[] = {"fmt",           "jobname", "output-directory", "output-format",
                                             "progname",      "mem",     "interaction",      "mktex",
                                             "no-mktex",      "tcx",     "output-comment",   "translate-file",
                                             "kpathsea-debug"};
    for (words.erase(words.begin(), words.begin() + (words.empty() ? 0 : 1)); !words.empty();) {
        const std::string word = words[0], option = undashed(word);
        const bool has_value = std::count(std::begin(with_value), std::end(with_value), option) > 0;
        words.erase(words.begin(), words.begin() + (has_value && words.size() > 1 ? 2 : 1));
        if (option.empty() && !word.empty() && std::string("&\\").find(word[0]) == std::string::npos)
            return word.substr(word[0] == '*' ? 1 : 0);
    }
    return "";
}

void check_engine_words(const Words &words) {
    for (const std::string name : {"fmt", "jobname", "ini"}) {
        std::string value;
        bool found = false, there = false;
        for (std::size_t i = 1; i < words.size(); i++) {
            const std::string option = undashed(words[i]);
            there = there || option == name;
            if (found)
                continue;
            const bool next = option == name && i + 1 < words.size();
            const bool inside = option.rfind(name + "=", 0) == 0;
            found = next || inside;
            if (found)
                value = next ? words[i + 1] : option.substr(name.size() + 1);
        }
        require(toolhost::option_value(words, name) == value, "an option has another value");
        require(toolhost::has_option(words, name) == there, "an option is seen or not seen");
    }
    require(toolhost::main_file(words) == expected_file(words), "the main file is another");
}

void check_client(const Words &words, unsigned char space) {
    const std::string line = client::command_line(words, space);
    Words expected;
    for (const std::string &word : words) {
        if (word.find_first_of("\"\x1e") != std::string::npos || word.find(static_cast<char>(space)) + 1 > 0)
            return; // a command line has no form for these
        expected.push_back(word);
    }
    require(toolhost::split_words(line, space) == expected, "the client's words are torn");
}

void check_options(Choices choices, const Words &words) {
    static const std::string options[] = {"-f", "--view", "--edit", "-C", "--", "-x", "-"};
    Words given = {"exec"};
    client::ExecRequest request, expected;
    std::string known = "yes";
    bool ended = false;
    for (std::size_t count = choices.below(6); count > 0 && !ended && known == "yes"; count--) {
        given.push_back(choices.of(options));
        const std::string &option = given.back();
        expected.follow = expected.follow || option == "-f";
        expected.view = expected.view || option == "--view";
        expected.edit = expected.edit || option == "--edit";
        ended = option == "--";
        if (option == "-C") {
            expected.folder = choices.bytes(9);
            given.push_back(expected.folder);
        } else if (option == "-x" || option == "-") {
            known = option;
        }
    }
    for (const std::string &word : words)
        given.push_back(word);
    const std::string problem = client::read_exec_words(given, request);
    if (known != "yes") {
        require(problem == "exec does not know " + known, "an option is taken that there is not");
        return;
    }
    if (!ended && !words.empty() && words[0].starts_with('-'))
        return;
    require(problem == (words.empty() ? "exec needs a command" : ""), "exec is refused or taken wrongly");
    require(request.words == words && request.folder == expected.folder &&
                request.follow == expected.follow && request.view == expected.view &&
                request.edit == expected.edit,
            "exec is read otherwise");
}

void check_dispatcher(const std::string &line) {
    const std::string blanks = " \t\n\v\f\r";
    const std::size_t start = std::min(line.find_first_not_of(blanks), line.size());
    const std::string word = line.substr(start, line.find_first_of(blanks, start) - start);
    const CommandProcedure expected = word.rfind("pdf", 0) == 0            ? DoPdfTeXAppleScript
                                      : word == "etex" || word == "elatex" ? DoTeXAppleScript
                                      : word == "dvips"                    ? DoDvipsAppleScript
                                      : word == "bibtex"                   ? DoBibtexAppleScript
                                      : word == "mpost"                    ? DoMpostAppleScript
                                      : word == "makeindex"                ? DoMakeindexAppleScript
                                      : word == "dvipdfm"                  ? DoDvipdfmAppleScript
                                                                           : nullptr;
    require(procedure_of_command(line.c_str()) == expected, "a command goes to another tool");
}

// " -@ FOLDER" at the end of a command.
void check_folder(const std::string &line) {
    static const TemporaryHome home;
    BoundedString<1024> command;
    for (const std::string &text : {line, line + " -@ " + home.path("work")}) {
        if (!command.copy(text))
            return;
        curr_dir.copy("before");
        const std::size_t mark = text.find(" -@ ");
        const int taken = SetCurrDirFromParameter(command);
        require(command == text.substr(0, mark), "the command is cut elsewhere");
        require(taken || curr_dir == "before", "a folder that is refused is taken");
        require(!taken || (mark != std::string::npos && !curr_dir.empty()),
                "a folder is taken that is not named");
        if (mark != std::string::npos && text.substr(mark + 4) == home.path("work"))
            require(taken && curr_dir == home.path("work"), "a folder is not taken");
    }
}

// What a shell makes of one word.
std::string unquoted_word(const std::string &text) {
    std::string word;
    bool quoted = false;
    for (std::size_t i = 0; i < text.size(); i++) {
        if (text[i] == '\'')
            quoted = !quoted;
        else
            word += !quoted && text[i] == '\\' ? text[++i] : text[i];
        require(quoted || text[i] == '\'' || std::isalnum(static_cast<unsigned char>(text[i])) ||
                    std::strchr("._-/+", text[i]),
                "a byte stands bare that means something");
    }
    return word;
}

void check_quoting(const std::string &name) {
    BoundedString<256> word, path;
    if (quote_word(name.c_str(), word))
        require(unquoted_word(word.c_str()) == name, "a word has changed in its quotes");
    else
        require(name.size() * 4 + 2 > 255, "a word is said not to fit");
    if (!quote_path(name.c_str(), path)) {
        require(name.size() * 2 > 255, "a path is said not to fit");
        return;
    }
    std::string plain;
    for (const char *p = path.c_str(); *p; p++) {
        require(!std::strchr("\"`$", *p), "a byte stands bare that means something");
        plain += *p == '\\' ? *++p : *p;
    }
    require(plain == name, "a path has changed in its quotes");
}

} // namespace

void fuzz_one(const std::string &input) {
    Choices choices(input);
    const unsigned char space = choices.of(spaces);
    const Words words = toolhost::split_words(input, space);
    require(words == expected_words(input, space), "the words are others");
    check_engine_words(words);
    Words given;
    while (!choices.ended() && given.size() < 30)
        given.push_back(choices.bytes(12));
    check_client(given, space);
    check_options(Choices(input), given);
    const std::string text = input.substr(0, input.find('\0'));
    check_dispatcher(text);
    check_folder(text);
    check_quoting(text);
}

} // namespace quillon::test
