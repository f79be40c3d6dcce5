#include "desktop/console_selection.h"

#include <QChar>
#include <QList>
#include <QString>
#include <algorithm>
#include <cstring>

#include "common/utf8.h"

namespace quillon::desktop {

namespace {

constexpr char line_end = 13;
constexpr std::size_t longest_character = 4, longest_word = 4096;

enum class Kind { blank, word, mark, line_end };

bool is_continuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

// The length of the character at OFFSET, which is less than the length of the text.
std::size_t size_at(const TextStore &store, std::size_t offset) {
    char bytes[longest_character];
    const std::size_t count = store.copy(offset, offset + sizeof bytes, bytes, sizeof bytes);
    return character_size(bytes, count);
}

Kind kind_at(const TextStore &store, std::size_t offset) {
    char bytes[longest_character];
    const std::size_t count = store.copy(offset, offset + sizeof bytes, bytes, sizeof bytes);
    const unsigned char byte = static_cast<unsigned char>(bytes[0]);
    if (byte == static_cast<unsigned char>(line_end))
        return Kind::line_end;
    if (byte == ' ' || byte == '\t')
        return Kind::blank;
    if (byte == '_')
        return Kind::word;
    const auto size = static_cast<qsizetype>(character_size(bytes, count));
    const auto codes = QString::fromUtf8(bytes, size).toUcs4();
    if (codes.isEmpty())
        return Kind::mark;
    return QChar::isLetterOrNumber(codes[0]) || QChar::isMark(codes[0]) ? Kind::word : Kind::mark;
}

// The offset behind the last line end before OFFSET.
std::size_t line_start(const TextStore &store, std::size_t offset) {
    while (offset > 0) {
        const std::size_t block = (offset - 1) / TextStore::block_size * TextStore::block_size;
        std::size_t count = 0;
        const char *const bytes = store.run(block, offset, &count);
        const void *const found = memrchr(bytes, line_end, count);
        if (found)
            return block + static_cast<std::size_t>(static_cast<const char *>(found) - bytes) + 1;
        offset = block;
    }
    return 0;
}

// The offset behind the first line end at OFFSET or later.
std::size_t line_limit(const TextStore &store, std::size_t offset) {
    while (offset < store.size()) {
        std::size_t count = 0;
        const char *const bytes = store.run(offset, store.size(), &count);
        const void *const found = std::memchr(bytes, line_end, count);
        if (found)
            return offset + static_cast<std::size_t>(static_cast<const char *>(found) - bytes) + 1;
        offset += count;
    }
    return store.size();
}

bool ends_with_line_end(const TextStore &store, ByteRange range) {
    return !range.empty() && store.byte(range.end - 1) == static_cast<unsigned char>(line_end);
}

} // namespace

std::size_t character_size(const char *bytes, std::size_t size) {
    // A byte that is no UTF-8 is shown as one character.
    return std::max<std::size_t>(1, common::utf8_length({bytes, size}, 0));
}

std::size_t shown_size(const char *bytes, std::size_t size) {
    std::size_t shown = 0;
    for (std::size_t at = 0; at < size;) {
        const std::size_t length = character_size(bytes + at, size - at);
        shown += length == longest_character ? 2 : 1;
        at += length;
    }
    return shown;
}

std::size_t bytes_of_shown(const char *bytes, std::size_t size, std::size_t count) {
    std::size_t at = 0;
    for (std::size_t shown = 0; at < size && shown < count;) {
        const std::size_t length = character_size(bytes + at, size - at);
        shown += length == longest_character ? 2 : 1;
        at += length;
    }
    return at;
}

std::size_t character_start(const TextStore &store, std::size_t offset) {
    if (offset >= store.size() || !is_continuation(store.byte(offset)))
        return std::min(offset, store.size());
    for (std::size_t back = 1; back < longest_character && back <= offset; ++back)
        if (!is_continuation(store.byte(offset - back)))
            return size_at(store, offset - back) > back ? offset - back : offset;
    return offset;
}

std::size_t next_character(const TextStore &store, std::size_t offset) {
    return offset < store.size() ? offset + size_at(store, offset) : store.size();
}

std::size_t previous_character(const TextStore &store, std::size_t offset) {
    return offset > 0 ? character_start(store, offset - 1) : 0;
}

std::size_t next_word(const TextStore &store, std::size_t offset) {
    const std::size_t limit = std::min(store.size(), offset + longest_word);
    while (offset < limit && kind_at(store, offset) != Kind::word)
        offset = next_character(store, offset);
    while (offset < limit && kind_at(store, offset) == Kind::word)
        offset = next_character(store, offset);
    return offset;
}

std::size_t previous_word(const TextStore &store, std::size_t offset) {
    const std::size_t limit = offset > longest_word ? offset - longest_word : 0;
    const auto before = [&store](std::size_t at) { return kind_at(store, previous_character(store, at)); };
    while (offset > limit && before(offset) != Kind::word)
        offset = previous_character(store, offset);
    while (offset > limit && before(offset) == Kind::word)
        offset = previous_character(store, offset);
    return offset;
}

ByteRange word_at(const TextStore &store, std::size_t offset) {
    if (offset >= store.size())
        return {offset, offset};
    const Kind kind = kind_at(store, offset);
    if (kind == Kind::line_end)
        return {offset, offset};
    ByteRange word{offset, next_character(store, offset)};
    if (kind == Kind::mark)
        return word;
    while (word.end < store.size() && word.end - offset < longest_word && kind_at(store, word.end) == kind)
        word.end = next_character(store, word.end);
    while (word.start > 0 && offset - word.start < longest_word) {
        const std::size_t before = previous_character(store, word.start);
        if (kind_at(store, before) != kind)
            break;
        word.start = before;
    }
    return word;
}

ByteRange line_at(const TextStore &store, std::size_t offset) {
    return {line_start(store, offset), line_limit(store, offset)};
}

ByteRange ConsoleSelection::unit_at(const TextStore &store, std::size_t offset) {
    if (unit_ == SelectionUnit::word)
        return word_at(store, offset);
    if (unit_ == SelectionUnit::character)
        return {offset, offset};
    const bool closed = line_.end <= store.size() && ends_with_line_end(store, line_);
    if (!line_.empty() && offset >= line_.start && (closed ? offset < line_.end : offset <= store.size())) {
        if (!closed && line_.end < store.size())
            line_.end = line_limit(store, line_.end);
        if (offset < line_.end || !ends_with_line_end(store, line_))
            return line_;
    }
    line_ = line_at(store, offset);
    return line_;
}

void ConsoleSelection::begin(const TextStore &store, std::size_t offset, SelectionUnit unit) {
    if (generation_ != store.generation())
        line_ = {};
    generation_ = store.generation();
    begun_ = true;
    unit_ = unit;
    active_ = character_start(store, offset);
    origin_ = reached_ = unit_at(store, active_);
}

void ConsoleSelection::extend(const TextStore &store, std::size_t offset) {
    clear_if_outdated(store);
    if (!begun_) {
        begin(store, offset, SelectionUnit::character);
        return;
    }
    active_ = character_start(store, offset);
    reached_ = unit_at(store, active_);
    // The unit at which the selection began may have grown since.
    if (reached_.start == origin_.start)
        origin_ = reached_;
}

void ConsoleSelection::extend_by_characters(const TextStore &store, std::size_t offset) {
    const bool backwards = reached_.start < origin_.start;
    if (begun_ && unit_ != SelectionUnit::character) {
        origin_.start = origin_.end = backwards ? origin_.end : origin_.start;
        unit_ = SelectionUnit::character;
    }
    extend(store, offset);
}

std::size_t ConsoleSelection::active() const {
    if (unit_ == SelectionUnit::character)
        return active_;
    return reached_.start < origin_.start ? reached_.start : reached_.end;
}

void ConsoleSelection::set(const TextStore &store, ByteRange range) {
    begin(store, range.start, SelectionUnit::character);
    extend(store, range.end);
}

bool ConsoleSelection::clear_if_outdated(const TextStore &store) {
    if (!begun_ || generation_ == store.generation())
        return false;
    begun_ = false;
    line_ = {};
    return true;
}

ByteRange ConsoleSelection::range(const TextStore &store) const {
    if (!begun_ || generation_ != store.generation())
        return {};
    const std::size_t start = std::min(origin_.start, reached_.start);
    const std::size_t end = std::max(origin_.end, reached_.end);
    const std::size_t last = character_start(store, end);
    // Bytes that came later may have made one character of those at the end of the selection.
    return {character_start(store, start), last < end ? next_character(store, last) : end};
}

} // namespace quillon::desktop
