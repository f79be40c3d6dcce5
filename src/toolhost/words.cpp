#include "toolhost/words.h"

#include <algorithm>
#include <array>

#include "common/path_forms.h"

namespace toolhost {

namespace {

// Engine options whose value may stand in the next word.
constexpr std::array<std::string_view, 13> options_with_value = {
    "fmt",           "jobname", "output-directory", "output-format",  "progname", "mem",
    "interaction",   "mktex",   "no-mktex",         "output-comment", "tcx",      "translate-file",
    "kpathsea-debug"};

std::string_view undashed(std::string_view word) {
    if (word.size() < 2 || word[0] != '-')
        return {};
    word.remove_prefix(1);
    if (word[0] == '-')
        word.remove_prefix(1);
    return word;
}

} // namespace

std::vector<std::string> split_words(std::string_view line, unsigned char space) {
    std::vector<std::string> words;
    std::string word;
    bool inside = false;
    bool quoted = false;
    for (const char c : line) {
        if (c == '"') {
            quoted = !quoted;
            inside = true;
        } else if (!quoted && (c == ' ' || c == '\t' || c == '\n' || c == '\r')) {
            if (inside)
                words.push_back(word);
            word.clear();
            inside = false;
        } else {
            inside = true;
            word += static_cast<unsigned char>(c) == space ? ' ' : c == common::colon_byte ? ':' : c;
        }
    }
    if (inside)
        words.push_back(word);
    return words;
}

std::string option_value(const std::vector<std::string> &words, std::string_view name) {
    for (std::size_t i = 1; i < words.size(); i++) {
        const std::string_view option = undashed(words[i]);
        if (option == name && i + 1 < words.size())
            return words[i + 1];
        if (option.size() > name.size() && option.starts_with(name) && option[name.size()] == '=')
            return std::string(option.substr(name.size() + 1));
    }
    return {};
}

bool has_option(const std::vector<std::string> &words, std::string_view name) {
    return std::any_of(words.begin() + (words.empty() ? 0 : 1), words.end(),
                       [name](const std::string &word) { return undashed(word) == name; });
}

std::string main_file(const std::vector<std::string> &words) {
    for (std::size_t i = 1; i < words.size(); i++) {
        const std::string &word = words[i];
        const std::string_view option = undashed(word);
        if (!option.empty()) {
            if (std::find(options_with_value.begin(), options_with_value.end(), option) !=
                options_with_value.end())
                i++;
            continue;
        }
        if (word.empty() || word[0] == '&' || word[0] == '\\')
            continue;
        return word[0] == '*' ? word.substr(1) : word;
    }
    return {};
}

} // namespace toolhost
