// Finds a text in the console's text: all its hits are counted, and any of them is found again by its number.
//
// The bytes of the store's blocks are searched where they lie. For each block only the number of the hits
// before it is kept, so that the index stays small however many hits there are; a hit is found again by
// searching one block.
#ifndef QUILLON_DESKTOP_CONSOLE_SEARCH_H
#define QUILLON_DESKTOP_CONSOLE_SEARCH_H

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "desktop/console_selection.h"
#include "front/text_store.h"

namespace quillon::desktop {

// A text to find, made ready for the search.
class SearchPattern {
  public:
    SearchPattern() = default;
    // TEXT is UTF-8. Unless MATCH_CASE is true, a letter stands for its capital too where both take equally
    // many bytes, and the other way round. A blank stands for the byte SPACE_SUBSTITUTE too, when that is
    // ASCII.
    SearchPattern(const std::string &text, bool match_case, int space_substitute);

    // The length in bytes of each hit; 0 for a pattern that finds nothing.
    std::size_t size() const { return one_.size(); }

  private:
    friend class PatternScan;
    void add(const char *character, std::size_t length, bool match_case, int space_substitute);
    void choose_rarest();
    bool stands_at(const char *bytes) const;

    std::string one_, other_;          // the two forms of every character, equally long
    std::vector<unsigned char> sizes_; // the length of each character in bytes
    std::size_t rarest_ = 0;           // the byte of the pattern that is looked for first
};

// Goes from hit to hit through bytes that lie together.
class PatternScan {
  public:
    // PATTERN and the SIZE bytes at BYTES must last longer than the scan.
    PatternScan(const SearchPattern &pattern, const char *bytes, std::size_t size);
    // The offset of the first place at FROM or later where the pattern stands as a whole; the number of bytes
    // when there is none. FROM never becomes smaller.
    std::size_t find(std::size_t from);

  private:
    const char *next(const char *from, char byte) const;

    const SearchPattern &pattern_;
    const char *const bytes_;
    const std::size_t size_;
    const char *end_;                    // behind the last place of the rarest byte
    const char *next_one_, *next_other_; // the next places of its two forms
};

class ConsoleSearch {
  public:
    // Looks for PATTERN from now on, in a text of which nothing is counted yet.
    void set_pattern(SearchPattern pattern);
    const SearchPattern &pattern() const { return pattern_; }
    // Counts the hits in what was added to STORE since the last call, or in all of it when the text was
    // changed otherwise. True when the number of hits may have changed.
    bool update(const TextStore &store);
    // The number of hits. Hits do not overlap.
    std::size_t hits() const { return hits_; }

    // These find hits that update has counted. The first hit that begins at OFFSET or later; the last one
    // that begins before OFFSET; and the number, from 0, of the first hit that begins at OFFSET or later.
    std::optional<ByteRange> first_from(const TextStore &store, std::size_t offset) const;
    std::optional<ByteRange> last_before(const TextStore &store, std::size_t offset) const;
    std::size_t number_of(const TextStore &store, std::size_t offset) const;
    // The hits that begin in RANGE.
    std::vector<ByteRange> hits_in(const TextStore &store, ByteRange range) const;

  private:
    // Where the search of a block begins, and the number of hits before that place.
    struct Stop {
        std::size_t start, hits;
    };

    template <typename Visit>
    void walk(const TextStore &store, std::size_t from, std::size_t limit, Visit visit) const;
    std::size_t stop_before(std::size_t offset) const;

    SearchPattern pattern_;
    std::vector<Stop> stops_; // one for each block that was searched
    std::size_t hits_ = 0, searched_ = 0, seen_ = 0, generation_ = 0;
    mutable std::string border_; // the bytes around the border of two blocks
};

} // namespace quillon::desktop

#endif
