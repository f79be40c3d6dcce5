#include "linux/events/script_parser.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>

#include "common/utf8.h"
#include "toolbox/scripts.h"

namespace quillon {

namespace {

constexpr std::size_t longest_found = 40; // bytes of the script that a message repeats
const char *const no_zero_byte = "A script cannot hold a zero byte.";

struct Token {
    enum Kind { word, text, line_end, other, end } kind = end;
    std::string_view spelling;
    std::string value; // of a text
};

bool is_line_end(char c) {
    return c == '\r' || c == '\n';
}

bool is_word_byte(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
}

// Upper-case letters as lower-case ones, whatever the locale.
char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

class Parser {
  public:
    Parser(std::string_view script, ScriptFault &fault) : script_(script), fault_(fault) {}

    bool script(std::vector<ScriptBlock> &blocks) {
        if (!advance() || !skip_empty_lines())
            return false;
        do {
            if (!block(blocks.emplace_back()) || !skip_empty_lines())
                return false;
        } while (token_.kind != Token::end);
        return true;
    }

  private:
    // Reads the next token; false, with the fault set, when the bytes form none.
    bool advance() {
        while (place_ < script_.size() && (script_[place_] == ' ' || script_[place_] == '\t'))
            place_++;
        token_ = {};
        if (place_ == script_.size())
            return true;
        const std::size_t start = place_;
        const char first = script_[place_++];
        if (first == '\0')
            return fail(OSASyntaxError, no_zero_byte);
        if (first == '"') {
            token_.kind = Token::text;
            if (!read_text())
                return false;
        } else if (is_line_end(first)) {
            token_.kind = Token::line_end;
        } else if (is_word_byte(first)) {
            token_.kind = Token::word;
            while (place_ < script_.size() && is_word_byte(script_[place_]))
                place_++;
        } else {
            token_.kind = Token::other;
            if (const std::size_t length = common::utf8_length(script_, start))
                place_ = start + length;
        }
        token_.spelling = script_.substr(start, place_ - start);
        return true;
    }

    // Reads from behind a quote up to the next one that no backslash stands before. Line ends between the
    // quotes belong to the text.
    bool read_text() {
        while (place_ < script_.size()) {
            char c = script_[place_++];
            if (c == '"')
                return true;
            if (c == '\\' && place_ < script_.size())
                c = script_[place_++];
            if (c == '\0')
                return fail(OSASyntaxError, no_zero_byte);
            token_.value += c;
        }
        return fail(OSASyntaxError, "The script ends within quotes.");
    }

    bool fail(OSStatus number, const std::string &message) {
        fault_ = {number, message};
        return false;
    }

    bool expected(const std::string &what) {
        std::string found = "\"" + shortened_text(token_.spelling, longest_found) + "\"";
        if (token_.kind == Token::line_end)
            found = "the end of the line";
        else if (token_.kind == Token::end)
            found = "the end of the script";
        return fail(OSASyntaxTypeError, "Expected " + what + " but found " + found + ".");
    }

    bool is_word(const char *word) const {
        return token_.kind == Token::word && std::ranges::equal(token_.spelling, std::string_view(word),
                                                                [](char a, char b) { return lower(a) == b; });
    }

    bool words(std::initializer_list<const char *> expected_words) {
        for (const char *const word : expected_words)
            if (!is_word(word) ? !expected("\"" + std::string(word) + "\"") : !advance())
                return false;
        return true;
    }

    bool number(std::int32_t *value) {
        const char *const end = token_.spelling.data() + token_.spelling.size();
        const auto [stopped, failure] = std::from_chars(token_.spelling.data(), end, *value);
        if (token_.kind != Token::word || failure != std::errc() || stopped != end)
            return expected("a whole number");
        return advance();
    }

    bool line_end() {
        if (token_.kind != Token::line_end && token_.kind != Token::end)
            return expected("the end of the line");
        return advance();
    }

    bool skip_empty_lines() {
        while (token_.kind == Token::line_end)
            if (!advance())
                return false;
        return true;
    }

    bool block(ScriptBlock &block) {
        if (!words({"tell", "application"}))
            return false;
        if (token_.kind != Token::text)
            return expected("the path of an application");
        block.application = token_.value;
        if (!advance() || !line_end() || !skip_empty_lines())
            return false;
        while (!is_word("end"))
            if (!statement(block.statements.emplace_back()) || !skip_empty_lines())
                return false;
        return words({"end", "tell"}) && line_end();
    }

    bool statement(ScriptStatement &statement) {
        if (is_word("activate"))
            return advance() && line_end();
        if (!is_word("select"))
            return expected("\"activate\", \"select\" or \"end\"");
        statement.kind = ScriptStatement::select_line;
        return words({"select", "display_line"}) && number(&statement.line) &&
               words({"of", "text", "window", "1"}) && line_end();
    }

    std::string_view script_;
    ScriptFault &fault_;
    std::size_t place_ = 0;
    Token token_;
};

} // namespace

bool parse_script(std::string_view text, std::vector<ScriptBlock> &blocks, ScriptFault &fault) {
    fault = {};
    if (Parser(text, fault).script(blocks))
        return true;
    blocks.clear();
    return false;
}

std::string shortened_text(std::string_view text, std::size_t limit) {
    if (text.size() <= limit)
        return std::string(text);
    std::size_t kept = 0;
    while (kept < text.size()) {
        const std::size_t length = common::utf8_length(text, kept);
        const std::size_t next = kept + (length ? length : 1);
        if (next > limit)
            break;
        kept = next;
    }
    return std::string(text.substr(0, kept)) + "...";
}

} // namespace quillon
