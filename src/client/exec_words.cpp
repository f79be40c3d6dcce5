#include "client/exec_words.h"

#include <cstddef>

namespace client {

std::string read_exec_words(const std::vector<std::string> &words, ExecRequest &request) {
    std::size_t i = 1;
    for (; i < words.size() && words[i].starts_with('-'); i++) {
        if (words[i] == "--") {
            i++;
            break;
        }
        if (words[i] == "-f")
            request.follow = true;
        else if (words[i] == "--view")
            request.view = true;
        else if (words[i] == "--edit")
            request.edit = true;
        else if (words[i] == "-C" && i + 1 < words.size())
            request.folder = words[++i];
        else
            return "exec does not know " + words[i];
    }
    for (; i < words.size(); i++)
        request.words.push_back(words[i]);
    return request.words.empty() ? "exec needs a command" : "";
}

std::string command_line(const std::vector<std::string> &words, unsigned char space) {
    std::string line;
    for (const std::string &word : words) {
        if (!line.empty())
            line += ' ';
        // In quotes a tab or a line end parts no words; a word with a quote of its own is left as it is.
        const bool quoted = word.empty() || (word.find_first_of("\t\n\r") != std::string::npos &&
                                             word.find('"') == std::string::npos);
        line += quoted ? "\"" : "";
        for (const char c : word)
            line += c == ' ' ? static_cast<char>(space) : c;
        line += quoted ? "\"" : "";
    }
    return line;
}

} // namespace client
