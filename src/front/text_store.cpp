#include "front/text_store.h"

#include <algorithm>
#include <cstring>
#include <malloc.h>

namespace quillon {

namespace {

constexpr char line_end = 13;
constexpr std::size_t keeps_freed = 1024 * 1024; // bytes of text that are not worth giving back

bool is_continuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

} // namespace

void TextStore::append(const void *data, std::size_t size) {
    const char *source = static_cast<const char *>(data);
    while (size > 0) {
        const std::size_t used = size_ % block_size;
        if (used == 0)
            blocks_.push_back({std::unique_ptr<char[]>(new char[block_size]), last_});
        const std::size_t part = std::min(size, block_size - used);
        std::memcpy(blocks_.back().bytes.get() + used, source, part);
        const std::size_t from = size_;
        size_ += part;
        scan(source, from, size_);
        source += part;
        size -= part;
    }
}

// Counts the line ends and segments that end in the bytes FROM to TO. DATA points at these bytes, which the
// store holds already.
void TextStore::scan(const char *data, std::size_t from, std::size_t to) {
    const char *const base = data;
    const std::size_t origin = from;
    while (from < to) {
        // A line end right after a full segment still closes that segment.
        const std::size_t limit = last_.start + segment_limit + 1;
        const std::size_t stop = std::min(to, limit);
        const void *const found =
            stop > from ? std::memchr(base + (from - origin), line_end, stop - from) : nullptr;
        if (found) {
            from = origin + static_cast<std::size_t>(static_cast<const char *>(found) - base) + 1;
            last_ = {last_.number + 1, from};
            ++line_ends_;
        } else if (to >= limit) {
            from = std::max(from, limit);
            last_ = {last_.number + 1, split_at(last_.start)};
        } else {
            return;
        }
    }
}

// The offset at which a segment that begins at START is cut when no line end closes it in time.
std::size_t TextStore::split_at(std::size_t start) const {
    const std::size_t limit = start + segment_limit;
    for (std::size_t at = limit; at + 4 > limit; --at)
        if (!is_continuation(byte(at)))
            return at;
    return limit;
}

void TextStore::clear() {
    blocks_.clear();
    blocks_.shrink_to_fit();
    // Blocks are small enough that the library would keep them for itself.
    if (size_ > keeps_freed)
        malloc_trim(0);
    size_ = line_ends_ = 0;
    last_ = recent_ = {};
    ++generation_;
}

void TextStore::keep_last(std::size_t size) {
    if (size >= size_)
        return;
    std::size_t start = size_ - size;
    const Segment cut = segment(segment_at(start));
    if (cut.ends_line && cut.start != start)
        start = cut.end + 1;
    TextStore kept;
    for (std::size_t count = 0; start < size_; start += count) {
        const char *const bytes = run(start, size_, &count);
        kept.append(bytes, count);
    }
    kept.generation_ = generation_ + 1;
    *this = std::move(kept);
}

int TextStore::erase_last() {
    if (size_ == 0)
        return 0;
    --size_;
    ++generation_;
    Block &block = blocks_.back();
    if (block.bytes[size_ % block_size] == line_end)
        --line_ends_;
    Mark mark = block.mark;
    if (size_ % block_size == 0)
        blocks_.pop_back();
    // The bytes that set the block's mark lie before the block, so the mark still holds.
    for (Mark following = next(mark); following.number != mark.number; following = next(mark))
        mark = following;
    last_ = mark;
    recent_ = {};
    return 1;
}

// The offset of the first line end in FROM to TO; TO when there is none.
std::size_t TextStore::find_line_end(std::size_t from, std::size_t to) const {
    while (from < to) {
        std::size_t count = 0;
        const char *const bytes = run(from, to, &count);
        const void *const found = std::memchr(bytes, line_end, count);
        if (found)
            return from + static_cast<std::size_t>(static_cast<const char *>(found) - bytes);
        from += count;
    }
    return to;
}

// The mark of the segment after that of MARK; MARK itself when it is the last.
TextStore::Mark TextStore::next(Mark mark) const {
    const std::size_t limit = mark.start + segment_limit + 1;
    const std::size_t stop = std::min(size_, limit);
    const std::size_t found = find_line_end(mark.start, stop);
    if (found < stop)
        return {mark.number + 1, found + 1};
    if (size_ >= limit)
        return {mark.number + 1, split_at(mark.start)};
    return mark;
}

// The number of the last block whose mark has a FIELD of at most VALUE.
std::size_t TextStore::block_before(std::size_t Mark::*field, std::size_t value) const {
    const auto after = std::upper_bound(blocks_.begin(), blocks_.end(), value,
                                        [field](std::size_t v, const Block &b) { return v < b.mark.*field; });
    return static_cast<std::size_t>(after - blocks_.begin()) - 1;
}

TextStore::Segment TextStore::segment(std::size_t number) const {
    if (number >= last_.number)
        return {last_.start, size_, false};
    Mark mark = blocks_[block_before(&Mark::number, number)].mark;
    if (recent_.number <= number && recent_.number > mark.number)
        mark = recent_;
    while (mark.number < number)
        mark = next(mark);
    recent_ = mark;
    const Mark following = next(mark);
    const bool ends_line = byte(following.start - 1) == static_cast<unsigned char>(line_end);
    return {mark.start, following.start - (ends_line ? 1 : 0), ends_line};
}

std::size_t TextStore::segment_at(std::size_t offset) const {
    if (offset >= last_.start)
        return last_.number;
    Mark mark = blocks_[block_before(&Mark::start, offset)].mark;
    if (recent_.start <= offset && recent_.start > mark.start)
        mark = recent_;
    for (Mark following = next(mark); following.start <= offset; following = next(mark))
        mark = following;
    recent_ = mark;
    return mark.number;
}

const char *TextStore::run(std::size_t offset, std::size_t end, std::size_t *count) const {
    const std::size_t inside = offset % block_size;
    end = std::min(end, size_);
    *count = offset < end ? std::min(end - offset, block_size - inside) : 0;
    return *count ? blocks_[offset / block_size].bytes.get() + inside : nullptr;
}

std::size_t TextStore::copy(std::size_t start, std::size_t end, void *data, std::size_t room) const {
    char *const target = static_cast<char *>(data);
    end = std::min(end, size_);
    if (start >= end)
        return 0;
    end = std::min(end, start + std::min(room, end - start));
    std::size_t done = 0;
    while (start + done < end) {
        std::size_t count = 0;
        const char *const bytes = run(start + done, end, &count);
        std::memcpy(target + done, bytes, count);
        done += count;
    }
    return done;
}

} // namespace quillon
