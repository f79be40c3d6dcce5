#include "linux/text_feed.h"

#include "linux/ae_codec.h"

namespace quillon {

static const char replacement[] = "\xEF\xBF\xBD";

static std::size_t expected_length(unsigned char lead) {
    if (lead < 0x80)
        return 1;
    if (lead >= 0xC2 && lead <= 0xDF)
        return 2;
    if (lead >= 0xE0 && lead <= 0xEF)
        return 3;
    return lead >= 0xF0 && lead <= 0xF4 ? 4 : 0;
}

// The number of bytes at TEXT that could begin a character of LENGTH bytes.
static std::size_t continuation_count(const std::string &text, std::size_t at, std::size_t length) {
    std::size_t count = 1;
    while (count < length && at + count < text.size() &&
           (static_cast<unsigned char>(text[at + count]) & 0xC0) == 0x80)
        count++;
    return count;
}

std::string Utf8Feed::take(const char *text, std::size_t length) {
    std::string input = kept_;
    input.append(text, length);
    kept_.clear();
    std::string output;
    output.reserve(input.size());
    std::size_t i = 0;
    while (i < input.size()) {
        const auto lead = static_cast<unsigned char>(input[i]);
        if (lead < 0x80) {
            if (lead != 0)
                output += lead == 13 ? '\n' : static_cast<char>(lead);
            i++;
            continue;
        }
        const std::size_t whole = expected_length(lead);
        const std::size_t count = whole ? continuation_count(input, i, whole) : 1;
        if (whole && count < whole && i + count == input.size()) {
            kept_ = input.substr(i);
            break;
        }
        if (whole && count == whole && is_utf8(input.data() + i, whole))
            output.append(input, i, whole);
        else
            output += replacement;
        i += count;
    }
    return output;
}

std::string Utf8Feed::finish() {
    const bool some = !kept_.empty();
    kept_.clear();
    return some ? replacement : "";
}

} // namespace quillon
