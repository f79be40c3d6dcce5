#include "common/application_table.h"

#include <algorithm>

#include "common/host_files.h"
#include "common/places.h"

namespace common {

namespace {

constexpr std::size_t largest_table = 1024 * 1024;

// Takes the next field off LINE: its words, up to a "|" outside double quotes.
Words take_field(std::string_view &line) {
    Words words;
    std::string word;
    bool inside_word = false, quoted = false;
    const auto end_word = [&] {
        if (inside_word)
            words.push_back(word);
        word.clear();
        inside_word = false;
    };
    std::size_t i = 0;
    for (; i < line.size() && (quoted || line[i] != '|'); i++) {
        const char c = line[i];
        if (c == '"') {
            quoted = !quoted;
            inside_word = true;
        } else if (!quoted && (c == ' ' || c == '\t' || c == '\r')) {
            end_word();
        } else {
            word += c;
            inside_word = true;
        }
    }
    end_word();
    line.remove_prefix(std::min(i, line.size()));
    return words;
}

} // namespace

std::vector<std::vector<Words>> ParseTable(std::string_view text) {
    std::vector<std::vector<Words>> rows;
    while (!text.empty()) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        const std::size_t first = line.find_first_not_of(" \t\r");
        if (first == std::string_view::npos || line[first] == '#')
            continue;
        std::vector<Words> fields = {take_field(line)};
        while (!line.empty()) {
            line.remove_prefix(1);
            fields.push_back(take_field(line));
        }
        rows.push_back(std::move(fields));
    }
    return rows;
}

std::string TableText(const char *name) {
    // The commands, the shell and the DVI previewer lie equally deep in their bundles.
    const std::string own = above_own_program(4) + "/Quillon.app/Contents/Resources/";
    return read_file(support_folder() + "/" + name, largest_table) + "\n" +
           read_file(own + name, largest_table);
}

std::pair<std::string, bool> TableName(const std::string &path) {
    constexpr std::string_view entry = ".desktop";
    std::string leaf = leaf_of(path);
    const bool is_entry = leaf.ends_with(entry);
    if (is_entry)
        leaf.resize(leaf.size() - entry.size());
    return {leaf, is_entry};
}

bool Contains(const Words &list, const std::string &word) {
    return std::find(list.begin(), list.end(), word) != list.end();
}

Words FilledArguments(const Words &arguments, const Codes &codes) {
    Words filled;
    for (const std::string &argument : arguments) {
        std::string text;
        for (std::size_t i = 0; i < argument.size(); i++) {
            const char letter = argument[i] == '%' && i + 1 < argument.size() ? argument[i + 1] : '\0';
            const auto code = std::find_if(codes.begin(), codes.end(),
                                           [letter](const auto &known) { return known.first == letter; });
            if (letter == '%')
                text += '%';
            else if (letter != '\0' && code != codes.end())
                text += code->second;
            else {
                text += argument[i];
                continue;
            }
            i++;
        }
        filled.push_back(std::move(text));
    }
    return filled;
}

bool HoldsCode(const Words &arguments, char letter) {
    // A code that is filled in with nothing changes the words that hold it.
    return FilledArguments(arguments, {{letter, ""}}) != FilledArguments(arguments, {});
}

} // namespace common
