// The tables of editors and viewers: rows, fields and words are those of a plain reading; what was written as
// a table is read as it was; every row can be used, whatever stands in it.
#include <csignal>

#include "common/editors_table.h"
#include "common/viewers_table.h"
#include "fuzz/fuzz.h"
#include "support/temporary_home.h"

namespace quillon::test {

const std::vector<std::string> fuzz_words = {"|",
                                             " | ",
                                             "\n",
                                             "\"",
                                             " ",
                                             "\t",
                                             "\r\n",
                                             "# note\n",
                                             "kate",
                                             "%f",
                                             "%l",
                                             "%d%u",
                                             "%%f",
                                             "%",
                                             "?--x",
                                             "terminal",
                                             "x11",
                                             "from=44",
                                             "from=",
                                             "from=99999999999999999999",
                                             "single presents",
                                             "zathura",
                                             "usr1",
                                             "hup",
                                             "evince=a.b",
                                             "a|b|%f|%l",
                                             "\n\"a b\" | c d | x%ly | %f | terminal",
                                             std::string(1, '\0'),
                                             "\xC3\xA9"};
const int fuzz_runs = 3000;

namespace {

using namespace common;
using Rows = std::vector<std::vector<Words>>;

// The place where the first of ENDS stands outside quotes in TEXT, from AT on; the end where none does.
std::size_t outside_quotes(const std::string &text, std::size_t at, const char *ends) {
    bool quoted = false;
    for (; at < text.size(); at++) {
        quoted = quoted != (text[at] == '"');
        if (!quoted && std::string(ends).find(text[at]) != std::string::npos)
            return at;
    }
    return at;
}

Words expected_words(const std::string &field) {
    Words words;
    for (std::size_t at = 0, end; at < field.size(); at = end + 1) {
        end = outside_quotes(field, at, " \t\r");
        std::string word = field.substr(at, end - at);
        if (word.empty())
            continue;
        word.erase(std::remove(word.begin(), word.end(), '"'), word.end());
        words.push_back(word);
    }
    return words;
}

Rows expected_rows(const std::string &text) {
    Rows rows;
    for (std::size_t at = 0, end; at < text.size(); at = end + 1) {
        end = std::min(text.find('\n', at), text.size());
        const std::string line = text.substr(at, end - at);
        const std::string bare = line.substr(std::min(line.find_first_not_of(" \t\r"), line.size()));
        if (bare.empty() || bare[0] == '#')
            continue;
        rows.emplace_back();
        for (std::size_t field = 0, bar; field <= line.size(); field = bar + 1) {
            bar = outside_quotes(line, field, "|");
            rows.back().push_back(expected_words(line.substr(field, bar - field)));
        }
    }
    return rows;
}

std::string written(const Rows &rows) {
    std::string text;
    for (const std::vector<Words> &row : rows) {
        for (std::size_t i = 0; i < row.size(); i++) {
            text += i > 0 ? "|" : "";
            for (const std::string &word : row[i])
                text += "\"" + word + "\" ";
        }
        text += "\n";
    }
    return text;
}

// True when WORDS hold the code, by counting through each word.
bool holds(const Words &words, char letter) {
    for (const std::string &word : words)
        for (std::size_t i = 0; i + 1 < word.size(); i++)
            if (word[i] == '%' && (word[i + 1] == '%' || word[i + 1] == letter)) {
                if (word[i + 1] == letter)
                    return true;
                i++;
            }
    return false;
}

std::string filled(const std::string &word, const std::string &file) {
    std::string text;
    for (std::size_t i = 0; i < word.size();) {
        const std::string two = word.substr(i, 2);
        text += two == "%%" ? "%" : two == "%f" ? file : word.substr(i, 1);
        i += two == "%%" || two == "%f" ? 2 : 1;
    }
    return text;
}

void check_arguments(const Words &arguments) {
    // What is filled in is not looked at for codes again.
    const Words found = FilledArguments(arguments, {{'f', "/a%l %%f"}});
    require(found.size() == arguments.size(), "arguments have come or gone");
    for (std::size_t i = 0; i < found.size(); i++)
        require(found[i] == filled(arguments[i], "/a%l %%f"), "an argument is filled in otherwise");
    const char letter = "fldux"[arguments.size() % 5];
    require(HoldsCode(arguments, letter) == holds(arguments, letter), "a code is seen or not seen");
}

// The words of FIELD, with LAST behind them unless they hold one of CODES.
Words with_place(Words field, const char *codes, const char *last) {
    for (; *codes; codes++)
        if (holds(field, *codes))
            return field;
    field.push_back(last);
    return field;
}

Words field_of(const std::vector<Words> &row, std::size_t number) {
    return number < row.size() ? row[number] : Words();
}

void check_editors(const std::string &text, const Rows &rows) {
    const std::vector<EditorRow> editors = ParseEditorRows(text);
    std::size_t at = 0;
    for (const std::vector<Words> &row : rows) {
        if (field_of(row, 2).empty())
            continue;
        require(at < editors.size(), "an editor is missing");
        const EditorRow &editor = editors[at++];
        const Words flags = field_of(row, 4);
        require(editor.programs == row[0] && editor.desktop_ids == row[1], "an editor has other names");
        require(editor.at_line == with_place(row[2], "f", "%f") &&
                    editor.plain == with_place(field_of(row, 3), "f", "%f"),
                "an editor has other arguments");
        require(editor.terminal == (std::count(flags.begin(), flags.end(), "terminal") > 0) &&
                    editor.x11_only == (std::count(flags.begin(), flags.end(), "x11") > 0),
                "an editor has other flags");
        check_arguments(editor.at_line);
        for (const std::string &name : editor.programs) {
            const EditorRow *const found = FindEditorRow(editors, "/none/" + name);
            // A row may hold under another display alone; a name with a slash or an entry's is another name.
            const bool plain =
                name.find_first_of(std::string("/\0", 2)) == std::string::npos && !name.ends_with(".desktop");
            require(!plain || (found ? Contains(found->programs, name) && found <= &editor : editor.x11_only),
                    "an editor is not found by its name");
        }
    }
    require(at == editors.size(), "there is an editor that no row tells of");
}

void check_viewers(const std::string &text, const Rows &rows) {
    const std::vector<ViewerRow> viewers = ParseViewerRows(text);
    std::size_t at = 0;
    for (const std::vector<Words> &row : rows) {
        if (row.size() < 3)
            continue;
        require(at < viewers.size(), "a viewer is missing");
        const ViewerRow &viewer = viewers[at++];
        const Words flags = field_of(row, 5);
        const auto has = [&](const char *flag) { return std::count(flags.begin(), flags.end(), flag) > 0; };
        require(viewer.programs == row[0] && viewer.desktop_ids == row[1], "a viewer has other names");
        require(viewer.show == with_place(row[2], "du", "%d") && viewer.at_source == field_of(row, 3) &&
                    viewer.links == field_of(row, 4),
                "a viewer has other arguments");
        require(viewer.single == has("single") && viewer.presents == has("presents") &&
                    viewer.zathura == has("zathura") &&
                    viewer.reread_signal == (has("usr1")  ? SIGUSR1
                                             : has("hup") ? SIGHUP
                                                          : 0),
                "a viewer has other flags");
        std::string names, expected;
        for (const std::string &name : viewer.evince)
            names += "evince=" + name + "\n";
        for (const std::string &flag : flags)
            expected += flag.rfind("evince=", 0) == 0 ? flag + "\n" : "";
        require(names == expected, "a viewer has other bus names");
        check_arguments(viewer.show);
    }
    require(at == viewers.size(), "there is a viewer that no row tells of");
}

} // namespace

void fuzz_one(const std::string &input) {
    static const TemporaryHome home;
    ::setenv("DISPLAY", ":0", 1);
    if (static bool known = false; !known) {
        // The tables of this home are read once.
        home.file("data/Quillon/editors.table", "mine | | +%l %f\n");
        home.file("data/Quillon/viewers.table", "mine | my.entry | %d\n");
        known = IsTableEditor("/none/mine") && !IsTableEditor("/none/other") &&
                FindViewerRow("/none/my.entry.desktop") && !FindViewerRow("/none/my.entry");
        require(known, "a person's own table is not read");
    }
    const Rows rows = ParseTable(input);
    require(rows == expected_rows(input), "the rows are others");
    Rows plain = rows;
    // A first word that begins with "#" makes a note even in quotes where blanks stand before it.
    plain.insert(plain.begin(), {{"first"}});
    require(ParseTable(written(plain)) == plain, "what was written is read otherwise");
    check_editors(input, rows);
    check_viewers(input, rows);
    const auto [leaf, is_entry] = TableName("/x/" + input);
    require(input.ends_with(leaf + (is_entry ? ".desktop" : "")) && leaf.find('/') == std::string::npos,
            "a path has another name");
}

} // namespace quillon::test
