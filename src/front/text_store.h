// The console's text: bytes in blocks of 64 KiB, appended at the end, found again by segment.
//
// A line ends with byte 13. For layout a line is divided into segments of at most segment_limit bytes, never
// inside a UTF-8 character, so that a line of any length costs no more than the part of it that is seen. Each
// block remembers where one segment starts, and the others are found by searching for line ends from there;
// so the index takes a few bytes a block, however short the lines are.
#ifndef QUILLON_FRONT_TEXT_STORE_H
#define QUILLON_FRONT_TEXT_STORE_H

#include <cstddef>
#include <memory>
#include <vector>

namespace quillon {

class TextStore {
  public:
    static constexpr std::size_t block_size = 65536;
    static constexpr std::size_t segment_limit = 4096;

    // Bytes START to END of the text; a line end (byte 13) that closes the segment stands at END and is not
    // part of it.
    struct Segment {
        std::size_t start, end;
        bool ends_line;
    };

    // Appends SIZE bytes, which are copied.
    void append(const void *data, std::size_t size);
    // Takes the whole text away and frees its memory.
    void clear();
    // Takes the beginning away, so that at most SIZE bytes stay; where it can the text then begins with a
    // line.
    void keep_last(std::size_t size);
    // Takes the last byte away: 1, or 0 when there is none.
    int erase_last();

    // The length of the text in bytes, and the number of line ends in it.
    std::size_t size() const { return size_; }
    std::size_t line_ends() const { return line_ends_; }
    // The number of segments, at least 1: after a line end there is an empty last segment.
    std::size_t segments() const { return last_.number + 1; }
    // The segment of that number, which counts from 0 and is less than segments().
    Segment segment(std::size_t number) const;
    // The number of the segment that holds the byte at OFFSET; a line end belongs to the segment that it
    // closes. Offsets behind the text give the last segment.
    std::size_t segment_at(std::size_t offset) const;

    // The byte at OFFSET, which is less than size().
    unsigned char byte(std::size_t offset) const {
        return static_cast<unsigned char>(blocks_[offset / block_size].bytes[offset % block_size]);
    }
    // Copies the bytes from START to END (not part of it), at most ROOM of them, and gives their number. An
    // END behind the text counts as its end.
    std::size_t copy(std::size_t start, std::size_t end, void *data, std::size_t room) const;
    // The bytes from OFFSET on that lie together in memory, at most to END; COUNT is set to their number.
    // They belong to the store and hold until the text changes. Null and 0 when there are none.
    const char *run(std::size_t offset, std::size_t end, std::size_t *count) const;
    // A number that changes with every clear() and erase_last(), after which earlier layouts may be wrong.
    std::size_t generation() const { return generation_; }

  private:
    struct Mark {
        std::size_t number = 0, start = 0;
    };
    struct Block {
        std::unique_ptr<char[]> bytes;
        Mark mark; // the segment that was running when the block began
    };

    void scan(const char *data, std::size_t from, std::size_t to);
    std::size_t split_at(std::size_t start) const;
    std::size_t find_line_end(std::size_t from, std::size_t to) const;
    Mark next(Mark mark) const;
    std::size_t block_before(std::size_t Mark::*field, std::size_t value) const;

    std::vector<Block> blocks_;
    std::size_t size_ = 0, line_ends_ = 0, generation_ = 0;
    Mark last_;             // the open segment at the end
    mutable Mark recent_{}; // the end of the last search, from which a walk forward goes on
};

} // namespace quillon

#endif
