#include "common/utf8.h"

namespace common {

namespace {

constexpr const char *replacement = "\xEF\xBF\xBD";

unsigned byte_at(std::string_view text, std::size_t at) {
    return at < text.size() ? static_cast<unsigned char>(text[at]) : 0u;
}

bool is_continuation(unsigned byte) {
    return (byte & 0xC0) == 0x80;
}

// Returns the length that the first byte of a character announces, 0 for a byte that begins no character.
std::size_t announced_length(unsigned lead) {
    if (lead < 0x80)
        return 1;
    if (lead < 0xC2 || lead > 0xF4)
        return 0;
    return lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
}

// Returns how many bytes from AT on could belong to one character of LENGTH bytes.
std::size_t usable_bytes(std::string_view text, std::size_t at, std::size_t length) {
    std::size_t count = 1;
    while (count < length && is_continuation(byte_at(text, at + count)))
        count++;
    return count;
}

} // namespace

std::size_t utf8_length(std::string_view text, std::size_t at) {
    const unsigned first = byte_at(text, at), second = byte_at(text, at + 1);
    const std::size_t length = at < text.size() ? announced_length(first) : 0;
    for (std::size_t i = 1; i < length; i++)
        if (!is_continuation(byte_at(text, at + i)))
            return 0;
    if ((first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F) ||
        (first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F))
        return 0;
    return length;
}

bool is_utf8(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = utf8_length(text, at);
        if (length == 0 || text[at] == '\0')
            return false;
        at += length;
    }
    return true;
}

std::string Utf8Feed::take(std::string_view text) {
    std::string input = kept_;
    input += text;
    kept_.clear();
    std::string output;
    output.reserve(input.size());
    for (std::size_t at = 0; at < input.size();) {
        const unsigned lead = byte_at(input, at);
        if (lead < 0x80) {
            if (lead != 0)
                output += lead == 13 ? '\n' : static_cast<char>(lead);
            at++;
            continue;
        }
        const std::size_t whole = announced_length(lead);
        const std::size_t count = whole ? usable_bytes(input, at, whole) : 1;
        if (whole && count < whole && at + count == input.size()) {
            kept_ = input.substr(at);
            break;
        }
        if (utf8_length(input, at) != 0)
            output.append(input, at, whole);
        else
            output += replacement;
        at += count;
    }
    return output;
}

std::string Utf8Feed::finish() {
    const bool some = !kept_.empty();
    kept_.clear();
    return some ? replacement : "";
}

std::string valid_utf8(std::string_view text) {
    Utf8Feed feed;
    const std::string valid = feed.take(text);
    return valid + feed.finish();
}

} // namespace common
