#include "desktop/spoken_text.h"

#include <algorithm>

#include "desktop/segment_layout.h"

namespace quillon::desktop {

namespace {

constexpr std::size_t segments_above = 100; // segments kept above the first one that is seen

std::size_t bytes_from(const TextStore &store, std::size_t segment) {
    return store.size() - store.segment(segment).start;
}

} // namespace

bool SpokenText::must_move(const TextStore &store, std::size_t visible, bool at_end) const {
    if (starts_.empty() || generation_ != store.generation() || first_ >= store.segments() ||
        at_end != follows_)
        return true;
    if (at_end) // then so much was added that nothing of the window would stay
        return bytes_from(store, first_) > bytes_ + largest;
    return visible < first_ || visible >= first_ + starts_.size();
}

void SpokenText::drop_front(const TextStore &store, Change &change) {
    if (bytes_from(store, first_) <= largest)
        return;
    const std::size_t wanted = store.segment_at(store.size() - kept);
    const std::size_t dropped = std::min(wanted - first_, starts_.size() - 1);
    change.front_removed = starts_[dropped];
    bytes_ -= store.segment(first_ + dropped).start - store.segment(first_).start;
    text_.remove(0, change.front_removed);
    starts_.erase(starts_.begin(), starts_.begin() + static_cast<std::ptrdiff_t>(dropped));
    for (qsizetype &start : starts_)
        start -= change.front_removed;
    first_ += dropped;
}

void SpokenText::add_segments(const TextStore &store, int space_substitute) {
    char bytes[TextStore::segment_limit];
    for (std::size_t number = first_ + starts_.size(); number < store.segments(); ++number) {
        if (!follows_ && bytes_ > kept)
            return;
        const TextStore::Segment segment = store.segment(number);
        store.copy(segment.start, segment.end, bytes, sizeof bytes);
        starts_.push_back(text_.size());
        text_ += shown_text(bytes, segment.end - segment.start, space_substitute);
        if (segment.ends_line)
            text_ += u'\n';
        bytes_ += segment.end - segment.start + (segment.ends_line ? 1 : 0);
    }
}

SpokenText::Change SpokenText::refresh(const TextStore *store, std::size_t visible, bool at_end,
                                       int space_substitute) {
    Change change;
    if (!store || must_move(*store, visible, at_end)) {
        change.replaced = true;
        change.removed = text_;
        text_.clear();
        starts_.clear();
        bytes_ = 0;
        if (!store)
            return change;
        follows_ = at_end;
        generation_ = store->generation();
        const std::size_t recent = store->size() > kept ? store->segment_at(store->size() - kept) : 0;
        first_ = at_end ? recent : visible - std::min(visible, segments_above);
        add_segments(*store, space_substitute);
        return change;
    }
    if (follows_)
        drop_front(*store, change);
    // The last segment may have grown, so it is taken anew.
    const TextStore::Segment last = store->segment(first_ + starts_.size() - 1);
    change.changed_from = starts_.back();
    change.removed = text_.mid(change.changed_from);
    text_.truncate(change.changed_from);
    starts_.pop_back();
    bytes_ = last.start - store->segment(first_).start;
    add_segments(*store, space_substitute);
    // A text that only grew counts as inserted, not as removed.
    const qsizetype common = std::min(change.removed.size(), text_.size() - change.changed_from);
    if (QStringView(text_).mid(change.changed_from, common) == QStringView(change.removed).left(common)) {
        change.changed_from += common;
        change.removed.remove(0, common);
    }
    return change;
}

std::size_t SpokenText::segment_of(qsizetype offset) const {
    const auto after = std::upper_bound(starts_.begin(), starts_.end(), offset);
    const auto index = static_cast<std::size_t>(after - starts_.begin());
    return first_ + (index > 0 ? index - 1 : 0);
}

qsizetype SpokenText::start_of(std::size_t segment) const {
    const std::size_t index = segment - first_;
    return index < starts_.size() ? starts_[index] : text_.size();
}

} // namespace quillon::desktop
