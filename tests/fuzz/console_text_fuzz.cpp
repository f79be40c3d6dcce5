// The console's text: the store holds what was appended and nothing else, in the segments of a plain reading;
// its limit keeps the end; text that goes out is whole UTF-8 however it is cut; a transcript is shown byte
// for byte.
#include "common/utf8.h"
#include "console/output.h"
#include "console/window.h"
#include "files/paths.h"
#include "front/text_store.h"
#include "fuzz/fuzz.h"
#include "support/temporary_home.h"
#include "support/whole_text.h"
#include "toolbox/text_engine.h"

namespace quillon::test {

const std::vector<std::string> fuzz_words = {"\r",
                                             "\n",
                                             "\r\n",
                                             "line of text\r",
                                             "\xC3\xA9",
                                             "\xE2\x82\xAC",
                                             "\xF0\x9D\x84\x9E",
                                             "\xC3",
                                             "\xA9",
                                             "\xE2\x82",
                                             "\xF0\x9D\x84",
                                             "\xED\xA0\x80",
                                             "\xC0\x80",
                                             "\xF4\x90\x80\x80",
                                             "\xFF",
                                             std::string(1, '\0'),
                                             "%s%n%d",
                                             std::string(1023, 'a'),
                                             std::string(4094, 'b'),
                                             "\x08\x7F"};
const int fuzz_runs = 1000;

namespace {

constexpr std::size_t limit = TextStore::segment_limit;

bool is_continuation(char byte) {
    return (byte & 0xC0) == 0x80;
}

// The place where the segment that begins at START ends, by looking at each byte.
TextStore::Segment segment_from(const std::string &text, std::size_t start) {
    for (std::size_t at = start; at < text.size(); at++) {
        if (text[at] == '\r')
            return {start, at, true};
        if (at - start == limit) {
            for (std::size_t cut = at; cut + 4 > at; cut--)
                if (!is_continuation(text[cut]))
                    return {start, cut, false};
            return {start, at, false};
        }
    }
    return {start, text.size(), false};
}

void check_segments(const TextStore &store, const std::string &text) {
    std::string copied(text.size() + 1, '?');
    require(store.size() == text.size() &&
                store.copy(0, text.size() + 9, copied.data(), copied.size()) == text.size() &&
                copied.compare(0, text.size(), text) == 0,
            "the store holds another text");
    require(store.line_ends() == static_cast<std::size_t>(std::count(text.begin(), text.end(), '\r')),
            "the store counts other line ends");
    std::size_t number = 0;
    for (std::size_t start = 0;; number++) {
        const TextStore::Segment expected = segment_from(text, start);
        const bool last = expected.end == text.size() && !expected.ends_line;
        require(number < store.segments(), "the store has fewer segments");
        const TextStore::Segment found = store.segment(number);
        require(found.start == expected.start && found.end == expected.end &&
                    found.ends_line == expected.ends_line,
                "a segment lies elsewhere");
        require(store.segment_at(expected.start) == number &&
                    (expected.start == expected.end || store.segment_at(expected.end - 1) == number),
                "a byte is in another segment");
        if (last)
            break;
        start = expected.end + (expected.ends_line ? 1 : 0);
    }
    require(store.segments() == number + 1, "the store has more segments");
}

void check_store(const std::string &input) {
    TextStore store;
    std::string text;
    // Blocks are filled so that the text lies across the end of one.
    const std::string lead(input.size() % 256 == 0 ? TextStore::block_size - 20 : 0, 'x');
    store.append(lead.data(), lead.size());
    text = lead;
    for (std::size_t at = 0, step = 1; at < input.size(); at += step, step = step * 3 % 6000) {
        store.append(input.data() + at, std::min(step, input.size() - at));
        text += input.substr(at, step);
    }
    check_segments(store, text);
    for (std::size_t i = input.size() % 40; i > 0 && !text.empty(); i--) {
        const std::size_t generation = store.generation();
        require(store.erase_last() == 1 && store.generation() != generation, "no byte is taken away");
        text.pop_back();
    }
    if (input.size() % 2 == 0)
        check_segments(store, text);
    // What comes in the place of the bytes taken away may be in other segments. The last are asked for first.
    const std::string again = "x\rxx\r" + input.substr(0, input.size() % 60);
    store.append(again.data(), again.size());
    text += again;
    std::vector<TextStore::Segment> segments = {segment_from(text, 0)};
    while (segments.back().ends_line || segments.back().end < text.size())
        segments.push_back(segment_from(text, segments.back().end + (segments.back().ends_line ? 1 : 0)));
    for (std::size_t number = segments.size(); number > 0 && number + 4 > segments.size(); number--)
        require(store.segment(number - 1).start == segments[number - 1].start &&
                    store.segment(number - 1).end == segments[number - 1].end,
                "a segment lies where another lay before");
    check_segments(store, text);
    const std::size_t kept = text.size() / 2 + input.size() % 7;
    store.keep_last(kept);
    require(store.size() <= std::max(kept, std::size_t{0}) || kept >= text.size(),
            "more is kept than the limit");
    // What is kept is the end, and the rest of a line that would be cut is the most that is lost.
    const std::string end = text.substr(text.size() - store.size());
    if (kept < text.size()) {
        const std::string wanted = text.substr(text.size() - kept);
        const std::size_t line = wanted.find('\r');
        require(store.size() == kept ||
                    (line != std::string::npos && line <= limit && store.size() == kept - line - 1),
                "more is lost than the rest of a line");
    }
    check_segments(store, end);
    store.clear();
    check_segments(store, "");
    require(store.erase_last() == 0, "a byte is taken out of nothing");
}

// The text as UTF-8: a character is well-formed when its code comes back from the slow way of writing it.
std::string written(std::uint32_t code) {
    std::string text;
    if (code < 0x80)
        return {static_cast<char>(code)};
    const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    const unsigned lead[] = {0, 0xC0, 0xE0, 0xF0};
    text = static_cast<char>(lead[more] | code >> (6 * more));
    for (int i = more - 1; i >= 0; i--)
        text += static_cast<char>(0x80 | (code >> (6 * i) & 0x3F));
    return text;
}

std::size_t well_formed(const std::string &text, std::size_t at) {
    const auto lead = static_cast<unsigned char>(text[at]);
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC0 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF8 ? 4
                                             : 0;
    if (length < 2 || at + length > text.size())
        return length == 1;
    std::uint32_t code = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; i++)
        code = code << 6 | (static_cast<unsigned char>(text[at + i]) & 0x3F);
    const bool legal = code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
    return legal && written(code) == text.substr(at, length) ? length : 0;
}

void check_utf8(const std::string &input) {
    common::Utf8Feed pieces;
    const std::string expected = common::valid_utf8(input);
    require(common::is_utf8(expected) || expected.empty(), "text that goes out is not UTF-8");
    std::string out;
    for (std::size_t at = 0, step = 1; at < input.size(); at += step, step = step % 5 + 1) {
        const std::string part = pieces.take(std::string_view(input).substr(at, step));
        require(common::is_utf8(part) || part.empty(), "a piece that goes out is not UTF-8");
        out += part;
    }
    require(out + pieces.finish() == expected, "text goes out otherwise when it is cut");
    // All well-formed characters are there in order, and between them nothing but replacements.
    std::size_t place = 0;
    bool plain = true;
    const auto pass_replacements = [&] {
        while (expected.compare(place, 3, "\xEF\xBF\xBD") == 0)
            place += 3;
    };
    for (std::size_t at = 0; at < input.size();) {
        const std::size_t length = well_formed(input, at);
        require(common::utf8_length(input, at) == length, "a character is well-formed or not wrongly");
        plain = plain && length > 0 && input[at] != '\0';
        if (length > 0 && input[at] != '\0') {
            const std::string character = input[at] == '\r' ? "\n" : input.substr(at, length);
            if (character != "\xEF\xBF\xBD") {
                pass_replacements();
                require(expected.compare(place, length, character) == 0, "a character is lost");
                place += length;
            }
        }
        at += std::max(length, std::size_t{1});
    }
    pass_replacements();
    require(place == expected.size(), "a character has come from nowhere");
    require(common::is_utf8(input) == plain, "a text is UTF-8 or not wrongly");
}

// What the console shows of FILL, which prints.
template <typename Print> std::string shown(Print print) {
    TXNClear(text);
    print();
    return whole_text(text);
}

void check_console(const std::string &input) {
    static const TemporaryHome home;
    const std::string path = home.file("work/transcript", input);
    FSSpec spec;
    require(FSPathMakeSpec(path.c_str(), &spec) == noErr, "there is no location");
    require(shown([&] { ReadInfoFile(&spec); }) == input && std::filesystem::exists(path),
            "a file is shown otherwise");
    require(shown([&] { ReadLogFile(&spec); }) == input && !std::filesystem::exists(path),
            "a transcript is shown otherwise");
}

// One of the ways to print, in turn.
void check_printing(const std::string &input) {
    static const std::string notice = "\r[The rest of this message does not fit.]\r";
    const std::string string = input.substr(0, input.find('\0'));
    std::string expected = string;
    std::replace(expected.begin(), expected.end(), '\n', '\r');
    const auto cut = [&](std::size_t room) {
        return expected.size() < room ? expected : expected.substr(0, room - 1) + notice;
    };
    switch (input.size() % 4) {
    case 0:
        require(shown([&] { ml_puts(string.c_str()); }) == expected, "a string is shown otherwise");
        break;
    case 1:
        require(shown([&] { ml_fprintf(stdout, "%s", string.c_str()); }) == cut(20480) &&
                    shown([&] { ml_printf("%s", string.c_str()); }) == cut(20480),
                "a message is shown otherwise");
        break;
    case 2:
        require(shown([&] { text_printf("%s", string.c_str()); }) == cut(2048),
                "a message is shown otherwise");
        break;
    default:
        require(shown([&] { TypeString(string.c_str()); }) == string, "a string is shown otherwise");
        require(shown([&] {
                    for (const char c : string)
                        ml_fputc(c, stdout);
                }) == expected,
                "characters are shown otherwise");
    }
}

void check_limit(const std::string &input) {
    std::string all;
    LimitText(1000);
    TXNClear(text);
    for (std::size_t at = 0; at < input.size(); at += 100) {
        TXNSetData(text, input.data() + at, std::min(std::size_t{100}, input.size() - at));
        all += input.substr(at, 100);
        const std::string kept = whole_text(text);
        require(kept.size() <= 1500 && all.ends_with(kept), "more than the limit is kept, or not the end");
        require(all.size() > 1500 || kept == all, "something is lost below the limit");
    }
    LimitText(0);
    TXNClear(text);
}

} // namespace

void fuzz_one(const std::string &input) {
    check_store(input);
    check_utf8(input.substr(0, 400));
    check_printing(input);
    if (input.size() % 4 == 0)
        check_console(input);
    if (input.size() % 4 == 1)
        check_limit(input.substr(0, 4000));
}

} // namespace quillon::test
