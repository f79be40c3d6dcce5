#include "headless/script_words.h"

namespace quillon {

static const char blanks[] = " \t\r";

static std::string trimmed(const std::string &text) {
    const std::size_t first = text.find_first_not_of(blanks);
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string TakeWord(std::string *line) {
    const std::string text = trimmed(*line);
    const std::size_t end = text.find_first_of(blanks);
    *line = end == std::string::npos ? "" : trimmed(text.substr(end));
    return text.substr(0, end);
}

// The character that an escape in double quotes stands for.
static char unescaped(char letter) {
    return letter == 'n' ? '\n' : letter == 'r' ? '\r' : letter;
}

std::vector<std::string> SplitWords(const std::string &line) {
    std::vector<std::string> words;
    std::string word;
    bool open = false;
    char quote = 0;
    for (std::size_t i = 0; i < line.size(); i++) {
        const char letter = line[i];
        if (quote != 0) {
            if (letter == quote)
                quote = 0;
            else if (letter == '\\' && quote == '"' && i + 1 < line.size())
                word += unescaped(line[++i]);
            else
                word += letter;
        } else if ((letter == '"' || letter == '\'') && !open) {
            quote = letter;
            open = true;
        } else if (letter == ' ' || letter == '\t' || letter == '\r') {
            if (open)
                words.push_back(word);
            word.clear();
            open = false;
        } else {
            word += letter;
            open = true;
        }
    }
    if (open)
        words.push_back(word);
    return words;
}

} // namespace quillon
