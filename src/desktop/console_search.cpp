#include "desktop/console_search.h"

#include <QChar>
#include <QList>
#include <QString>
#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace quillon::desktop {

namespace {

// The bytes of transcripts, from the most frequent on; bytes that are not listed are rarer.
constexpr std::string_view frequent = " e/traonsitlxm.dpcu0gbf1h-y(2)v4w3586k79\r[]:,=_j>q<z\\";

std::size_t frequency(char byte) {
    const auto at = static_cast<unsigned char>(byte);
    const char lower = at >= 'A' && at <= 'Z' ? static_cast<char>(at + 32) : byte;
    const std::size_t place = frequent.find(lower);
    // Lead bytes of UTF-8 are shared by whole alphabets.
    const std::size_t common = at >= 0xC0 ? 8 : frequent.size();
    return frequent.size() - (place == std::string_view::npos ? common : place);
}

// The other form of a letter: its capital, or the small letter of a capital; in UTF-8.
QByteArray other_case(const char *character, std::size_t length) {
    const auto codes = QString::fromUtf8(character, static_cast<qsizetype>(length)).toUcs4();
    const char32_t code = codes.isEmpty() ? 0 : codes[0];
    const char32_t upper = QChar::toUpper(code);
    const char32_t other = upper == code ? QChar::toLower(code) : upper;
    return QString::fromUcs4(&other, 1).toUtf8();
}

} // namespace

SearchPattern::SearchPattern(const std::string &text, bool match_case, int space_substitute) {
    for (std::size_t at = 0; at < text.size(); at += sizes_.back())
        add(text.data() + at, character_size(text.data() + at, text.size() - at), match_case,
            space_substitute);
    choose_rarest();
}

void SearchPattern::add(const char *character, std::size_t length, bool match_case, int space_substitute) {
    one_.append(character, length);
    sizes_.push_back(static_cast<unsigned char>(length));
    QByteArray other;
    if (*character == ' ' && space_substitute > 0 && space_substitute < 0x80)
        other = QByteArray(1, static_cast<char>(space_substitute));
    else if (!match_case)
        other = other_case(character, length);
    if (static_cast<std::size_t>(other.size()) == length)
        other_.append(other.constData(), length);
    else
        other_.append(character, length);
}

void SearchPattern::choose_rarest() {
    const auto rate = [this](std::size_t at) { return std::max(frequency(one_[at]), frequency(other_[at])); };
    for (std::size_t at = 1; at < one_.size(); ++at)
        if (rate(at) < rate(rarest_))
            rarest_ = at;
}

bool SearchPattern::stands_at(const char *bytes) const {
    std::size_t at = 0;
    for (const unsigned char length : sizes_) {
        const bool same = length == 1 ? bytes[at] == one_[at] || bytes[at] == other_[at]
                                      : std::memcmp(bytes + at, one_.data() + at, length) == 0 ||
                                            std::memcmp(bytes + at, other_.data() + at, length) == 0;
        if (!same)
            return false;
        at += length;
    }
    return true;
}

PatternScan::PatternScan(const SearchPattern &pattern, const char *bytes, std::size_t size)
    : pattern_(pattern), bytes_(bytes), size_(size), end_(bytes), next_one_(bytes), next_other_(bytes) {
    const std::size_t length = pattern.size(), rarest = pattern.rarest_;
    if (length == 0 || size < length)
        return;
    end_ = bytes + size - length + rarest + 1;
    next_one_ = next(bytes + rarest, pattern.one_[rarest]);
    const bool alike = pattern.one_[rarest] == pattern.other_[rarest];
    next_other_ = alike ? end_ : next(bytes + rarest, pattern.other_[rarest]);
}

// The first place of the byte at FROM or later, among those where the rarest byte can stand.
const char *PatternScan::next(const char *from, char byte) const {
    const void *const found =
        from < end_ ? std::memchr(from, byte, static_cast<std::size_t>(end_ - from)) : nullptr;
    return found ? static_cast<const char *>(found) : end_;
}

std::size_t PatternScan::find(std::size_t from) {
    const std::size_t rarest = pattern_.rarest_;
    const char *const least = bytes_ + from + rarest;
    if (next_one_ < least)
        next_one_ = next(least, pattern_.one_[rarest]);
    if (next_other_ < least)
        next_other_ = next(least, pattern_.other_[rarest]);
    for (const char *at; (at = std::min(next_one_, next_other_)) < end_;) {
        if (pattern_.stands_at(at - rarest))
            return static_cast<std::size_t>(at - rarest - bytes_);
        if (at == next_one_)
            next_one_ = next(at + 1, pattern_.one_[rarest]);
        else
            next_other_ = next(at + 1, pattern_.other_[rarest]);
    }
    return size_;
}

void ConsoleSearch::set_pattern(SearchPattern pattern) {
    pattern_ = std::move(pattern);
    stops_.clear();
    hits_ = searched_ = seen_ = 0;
}

// Calls VISIT with the offset of every hit that begins at FROM or later and before LIMIT, until it answers
// false.
template <typename Visit>
void ConsoleSearch::walk(const TextStore &store, std::size_t from, std::size_t limit, Visit visit) const {
    const std::size_t length = pattern_.size();
    while (length > 0 && from < limit && from + length <= store.size()) {
        std::size_t count = 0, size = 0, at = 0;
        const char *bytes = store.run(from, store.size(), &count);
        const std::size_t room = limit - from + length - 1;
        if (count >= length) {
            size = std::min(count, room);
        } else {
            // What is left of the block is shorter than a hit, so the hit goes on in the next one.
            border_.resize(std::min(count + length - 1, room));
            size = store.copy(from, from + border_.size(), border_.data(), border_.size());
            bytes = border_.data();
        }
        PatternScan scan(pattern_, bytes, size);
        for (std::size_t found = scan.find(0); found < size; found = scan.find(at)) {
            if (!visit(from + found))
                return;
            at = found + length;
        }
        from += std::max(at, count >= length ? count - (length - 1) : count);
    }
}

bool ConsoleSearch::update(const TextStore &store) {
    const bool anew = generation_ != store.generation();
    if (anew) {
        stops_.clear();
        hits_ = searched_ = seen_ = 0;
        generation_ = store.generation();
    }
    if (store.size() == seen_)
        return anew;
    seen_ = store.size();
    const std::size_t length = pattern_.size();
    if (length == 0)
        return anew;
    const std::size_t before = hits_;
    // A place is searched once the bytes of a whole hit are there.
    const std::size_t complete = store.size() >= length ? store.size() - length + 1 : 0;
    while (searched_ < complete) {
        const std::size_t block = searched_ / TextStore::block_size;
        while (stops_.size() <= block)
            stops_.push_back({searched_, hits_});
        const std::size_t limit = std::min(complete, (block + 1) * TextStore::block_size);
        std::size_t end = limit;
        walk(store, searched_, limit, [&](std::size_t start) {
            ++hits_;
            end = std::max(end, start + length);
            return true;
        });
        searched_ = end;
    }
    return anew || hits_ != before;
}

// The number of the last stop that lies at OFFSET or before it; the first when none does.
std::size_t ConsoleSearch::stop_before(std::size_t offset) const {
    const auto after =
        std::upper_bound(stops_.begin(), stops_.end(), offset,
                         [](std::size_t value, const Stop &stop) { return value < stop.start; });
    return after == stops_.begin() ? 0 : static_cast<std::size_t>(after - stops_.begin()) - 1;
}

std::optional<ByteRange> ConsoleSearch::first_from(const TextStore &store, std::size_t offset) const {
    if (stops_.empty() || generation_ != store.generation())
        return std::nullopt;
    std::optional<ByteRange> hit;
    walk(store, stops_[stop_before(offset)].start, searched_, [&](std::size_t start) {
        if (start >= offset)
            hit = ByteRange{start, start + pattern_.size()};
        return !hit;
    });
    return hit;
}

std::optional<ByteRange> ConsoleSearch::last_before(const TextStore &store, std::size_t offset) const {
    const std::size_t number = number_of(store, offset);
    if (number == 0)
        return std::nullopt;
    // The hit is the last one that the stops count before it or in its own block.
    const auto after =
        std::lower_bound(stops_.begin(), stops_.end(), number,
                         [](const Stop &stop, std::size_t value) { return stop.hits < value; });
    const Stop &stop = *(after - 1);
    std::size_t hits = stop.hits, last = stop.start;
    walk(store, stop.start, searched_, [&](std::size_t start) {
        last = start;
        return ++hits < number;
    });
    return ByteRange{last, last + pattern_.size()};
}

std::size_t ConsoleSearch::number_of(const TextStore &store, std::size_t offset) const {
    if (stops_.empty() || generation_ != store.generation())
        return 0;
    const Stop &stop = stops_[stop_before(offset)];
    std::size_t number = stop.hits;
    walk(store, stop.start, std::min(offset, searched_), [&number](std::size_t) {
        ++number;
        return true;
    });
    return number;
}

std::vector<ByteRange> ConsoleSearch::hits_in(const TextStore &store, ByteRange range) const {
    std::vector<ByteRange> hits;
    if (stops_.empty() || generation_ != store.generation())
        return hits;
    const std::size_t limit = std::min(range.end, searched_);
    walk(store, stops_[stop_before(range.start)].start, limit, [&](std::size_t start) {
        if (start >= range.start)
            hits.push_back({start, start + pattern_.size()});
        return true;
    });
    return hits;
}

} // namespace quillon::desktop
