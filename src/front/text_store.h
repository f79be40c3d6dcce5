// The console's text: bytes in blocks of 64 KiB, appended at the end, found again by segment.
//
// A line ends with byte 13. For layout a line is divided into segments of at most segment_limit bytes, never
// inside a UTF-8 character, so that a line of any length costs no more than what is seen of it. Each block
// remembers one segment start; a segment inside a block is found by searching for line ends from there, so
// the index costs a few bytes a block whatever the lines are like.
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

    void append(const void *data, std::size_t size);
    void clear();
    // Takes the last byte away: 1, or 0 when there is none.
    int erase_last();

    std::size_t size() const { return size_; }
    std::size_t line_ends() const { return line_ends_; }
    // At least 1: after a line end the last segment is empty.
    std::size_t segments() const { return last_.number + 1; }
    // NUMBER counts from 0 and is less than segments().
    Segment segment(std::size_t number) const;
    // The number of the segment that holds byte OFFSET (a line end belongs to the segment that it closes).
    std::size_t segment_at(std::size_t offset) const;

    // OFFSET is less than size().
    unsigned char byte(std::size_t offset) const {
        return static_cast<unsigned char>(blocks_[offset / block_size].bytes[offset % block_size]);
    }
    // Copies the bytes from START to END, at most ROOM of them; the number of bytes copied.
    std::size_t copy(std::size_t start, std::size_t end, void *data, std::size_t room) const;
    // The bytes from OFFSET that lie together in memory, at most to END; COUNT says how many.
    const char *run(std::size_t offset, std::size_t end, std::size_t *count) const;
    // Changes with every clear() and erase_last(): what was laid out before may no longer stand.
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
    mutable Mark recent_{}; // where the last search ended, so that a walk forward goes on from there
};

} // namespace quillon

#endif
