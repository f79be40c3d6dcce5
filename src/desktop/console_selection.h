// The text that the person selects in the console, and the walks over a text that selecting needs. An offset
// counts the bytes of the store, and always stands between two characters: a byte that is not UTF-8 is a
// character by itself, as it is shown.
#ifndef QUILLON_DESKTOP_CONSOLE_SELECTION_H
#define QUILLON_DESKTOP_CONSOLE_SELECTION_H

#include <cstddef>

#include "front/text_store.h"

namespace quillon::desktop {

// Bytes START to END (not part of it) of a text.
struct ByteRange {
    std::size_t start = 0, end = 0;
    bool empty() const { return start >= end; }
    bool operator==(const ByteRange &) const = default;
};

// The length in bytes of the character at BYTES, of which SIZE (at least 1) are there.
std::size_t character_size(const char *bytes, std::size_t size);
// The number of UTF-16 characters that show SIZE bytes (shown_text), and the number of bytes that the first
// COUNT of them show, at most SIZE.
std::size_t shown_size(const char *bytes, std::size_t size);
std::size_t bytes_of_shown(const char *bytes, std::size_t size, std::size_t count);

// The start of the character that OFFSET lies in (OFFSET itself between characters), and the places after and
// before the next character; the text's ends are the limits.
std::size_t character_start(const TextStore &store, std::size_t offset);
std::size_t next_character(const TextStore &store, std::size_t offset);
std::size_t previous_character(const TextStore &store, std::size_t offset);
// The end of the next word, and the start of the one before.
std::size_t next_word(const TextStore &store, std::size_t offset);
std::size_t previous_word(const TextStore &store, std::size_t offset);
// The word, the blanks or the single mark at OFFSET; it is cut where it is longer than a few KiB.
ByteRange word_at(const TextStore &store, std::size_t offset);
// The line of OFFSET with its line end. It takes the time of reading the line.
ByteRange line_at(const TextStore &store, std::size_t offset);

// What a selection grows by.
enum class SelectionUnit { character, word, line };

class ConsoleSelection {
  public:
    // Begins a selection by the unit at OFFSET, or extends the running one to the unit at OFFSET. Within the
    // same line extending by lines takes no time.
    void begin(const TextStore &store, std::size_t offset, SelectionUnit unit);
    void extend(const TextStore &store, std::size_t offset);
    // Extends the running selection to OFFSET by characters, whatever it was made by.
    void extend_by_characters(const TextStore &store, std::size_t offset);
    // Selects RANGE.
    void set(const TextStore &store, ByteRange range);
    // Selects nothing, and forgets where a selection began.
    void clear() { begun_ = false; }
    // Clears the selection when the text is no longer that in which it was made. True when it did.
    bool clear_if_outdated(const TextStore &store);

    // True once a selection was begun, even while it is empty.
    bool begun() const { return begun_; }
    // The selected bytes; START and END are equal when there are none.
    ByteRange range(const TextStore &store) const;
    // The end of the selection that moves.
    std::size_t active() const;

  private:
    ByteRange unit_at(const TextStore &store, std::size_t offset);

    SelectionUnit unit_ = SelectionUnit::character;
    ByteRange origin_, reached_; // the units at which the selection begins and ends
    ByteRange line_;             // the line that was looked for last
    std::size_t active_ = 0, generation_ = 0;
    bool begun_ = false;
};

} // namespace quillon::desktop

#endif
