// Desktop entries: keys are those of a plain reading of the file; words that were quoted come out of an Exec
// line as they are; no byte of a document means anything.
#include "common/desktop_entry.h"

#include <map>

#include "common/path_forms.h"
#include "fuzz/fuzz.h"
#include "support/temporary_home.h"

namespace quillon::test {

const std::vector<std::string> fuzz_words = {"[Desktop Entry]\n",
                                             "[Desktop Action x]\n",
                                             "Type=Application\n",
                                             "Type=Link\n",
                                             "Exec=",
                                             "Exec=view %f\n",
                                             "Exec = \"a b\" %U %i %c %k\n",
                                             "\nName=A\\sB\\n\\\\\\x\n",
                                             "Icon=eye\n",
                                             "Path=/tmp\n",
                                             "Terminal=true\n",
                                             "DBusActivatable=true\n",
                                             "\n",
                                             "\r\n",
                                             "=",
                                             "# Exec=no\n",
                                             "\"",
                                             "\\",
                                             " ",
                                             "\t",
                                             "%",
                                             "%%",
                                             "%m",
                                             "%F",
                                             "'",
                                             "$`",
                                             "[",
                                             std::string(1, '\0'),
                                             "\xC3\xA9",
                                             "[Desktop Entry]\nType=Application\nExec=view --x \"q r\" %f\n"};
const int fuzz_runs = 1500;

namespace {

using common::DesktopEntry;
using Words = std::vector<std::string>;

std::string bare(const std::string &text) {
    const std::size_t first = text.find_first_not_of(" \t"), last = text.find_last_not_of(" \t\r");
    // A line of carriage returns has a first character and no last one.
    return first == std::string::npos || last == std::string::npos || last < first
               ? ""
               : text.substr(first, last - first + 1);
}

std::string without_escapes(std::string text) {
    static const std::map<char, char> meanings = {
        {'s', ' '}, {'n', '\n'}, {'t', '\t'}, {'r', '\r'}, {'\\', '\\'}};
    for (std::size_t at = 0; (at = text.find('\\', at)) != std::string::npos && at + 1 < text.size();) {
        const auto meaning = meanings.find(text[at + 1]);
        if (meaning == meanings.end())
            at += 2;
        else
            text.replace(at++, 2, 1, meaning->second);
    }
    return text;
}

// The first value of each key in the groups of that name.
std::map<std::string, std::string> expected_values(const std::string &input) {
    std::map<std::string, std::string> values;
    bool inside = false;
    for (std::size_t at = 0, end; at < input.size(); at = end + 1) {
        end = std::min(input.find('\n', at), input.size());
        const std::string line = input.substr(at, end - at);
        const std::size_t equals = line.find('=');
        if (!line.empty() && line[0] == '[')
            inside = bare(line) == "[Desktop Entry]";
        if (!inside || equals == std::string::npos || line[0] == '#')
            continue;
        const std::string key = bare(line.substr(0, equals));
        if (values.count(key) == 0)
            values[key] = without_escapes(bare(line.substr(equals + 1)));
    }
    return values;
}

std::string in_quotes(const std::string &word) {
    std::string text = "\"";
    for (const char c : word)
        text += std::string(std::string("\"`$\\").find(c) != std::string::npos ? 1 : 0, '\\') + c;
    return text + "\"";
}

void check_command(DesktopEntry entry, const std::string &text) {
    Choices choices(text);
    // Quoted words stay as they are, codes and all; a document without a code of its own goes last.
    Words expected = {"view"};
    entry.exec = "view";
    while (!choices.ended() && expected.size() < 8) {
        expected.push_back(choices.bytes(12));
        entry.exec += (choices.below(2) ? "  " : "\t ") + in_quotes(expected.back());
    }
    require(common::entry_command(entry, "") == expected, "quoted words have changed");
    const std::string document = "/" + text;
    expected.push_back(document);
    require(common::entry_command(entry, document) == expected, "a document does not go last");
    entry.exec += " %f";
    require(common::entry_command(entry, document) == expected, "a document has changed");
    expected.back() = "--u=" + common::file_uri(document) + "%";
    entry.exec.replace(entry.exec.size() - 2, 2, "--u=%u%%");
    require(common::entry_command(entry, document) == expected, "a document's URI has changed");
    require(common::path_of_uri(common::file_uri(document)) == document, "a URI leads elsewhere");
    // What the entry says of itself is filled in as one word each.
    entry.exec = "view -n=%c %k %i %m x%mx %";
    expected = {"view", "-n=" + entry.name, entry.path};
    if (!entry.icon.empty())
        expected.insert(expected.end(), {"--icon", entry.icon});
    expected.insert(expected.end(), {"xx", "%"});
    require(common::entry_command(entry, "") == expected, "an entry's own words are others");
    entry.exec += " \"" + text.substr(0, text.find_first_of("\"\\"));
    require(common::entry_command(entry, document).empty(), "an open quote makes a command");
}

// Any Exec line: the document is in the command, and no word is made of it.
void check_any_line(DesktopEntry entry) {
    const std::string document = "/a \"b\" 'c' $d `e` \\f %f%u;\n";
    const Words with = common::entry_command(entry, document), without = common::entry_command(entry, "");
    const bool open = without.empty();
    if (with.empty()) {
        require(open, "a command is made without a document alone");
        return;
    }
    const bool stands = std::any_of(with.begin(), with.end(), [&](const std::string &word) {
        return word.find(document) != std::string::npos ||
               word.find(common::file_uri(document)) != std::string::npos;
    });
    require(stands, "the document is not in the command");
    require(with.size() >= without.size(), "a document takes words away");
}

} // namespace

void fuzz_one(const std::string &input) {
    static const TemporaryHome home;
    static const std::string folder = home.folder("data/applications/sub");
    const std::string path = home.file("data/applications/sub/x.desktop", input);
    DesktopEntry entry;
    const auto values = expected_values(input);
    const auto value = [&](const char *key) { return values.count(key) ? values.at(key) : std::string(); };
    const bool expected =
        value("Type") == "Application" && (!value("Exec").empty() || value("DBusActivatable") == "true");
    require(common::read_desktop_entry(path, entry) == expected, "an entry is taken or refused wrongly");
    if (expected) {
        require(entry.path == path && entry.id == "x", "an entry has another id");
        require(entry.name == value("Name") && entry.icon == value("Icon") && entry.exec == value("Exec") &&
                    entry.folder == value("Path") && entry.terminal == (value("Terminal") == "true") &&
                    entry.bus_activatable == (value("DBusActivatable") == "true"),
                "an entry has other values");
        check_any_line(entry);
    }
    entry.path = path;
    entry.name = "N %f \"x\"";
    entry.icon = input.size() % 2 ? "an icon" : "";
    check_command(entry, input);
    // An id leads to its file, also where a "-" stands for the folder.
    require(input.size() % 16 != 0 || (common::find_desktop_entry("sub-x") == path &&
                                       common::find_desktop_entry("sub-x.desktop") == path &&
                                       common::find_desktop_entry("x-sub").empty()),
            "an id leads elsewhere");
}

} // namespace quillon::test
