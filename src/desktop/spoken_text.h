// The part of the console's text that assistive technology reads.
//
// A console can hold millions of lines, so only a window of whole segments is offered. While the view stays
// at the end this is the recent text, whose front is dropped in big steps so that offsets seldom move; while
// the person has scrolled up it is the text around the rows that they see. Offsets are UTF-16 characters of
// that window.
#ifndef QUILLON_DESKTOP_SPOKEN_TEXT_H
#define QUILLON_DESKTOP_SPOKEN_TEXT_H

#include <QString>
#include <cstddef>
#include <vector>

#include "front/text_store.h"

namespace quillon::desktop {

class SpokenText {
  public:
    // When the window grows beyond LARGEST bytes, its front is dropped until it has about KEPT.
    static constexpr std::size_t largest = 1 << 18, kept = 1 << 17;

    // What a refresh changed, in this order: characters at the front, then all from a place on.
    struct Change {
        bool replaced = false;       // the whole text is new
        qsizetype front_removed = 0; // characters dropped at the front
        qsizetype changed_from = 0;  // then everything from this offset on is new
        QString removed;             // the text that stood there before
    };

    // Brings the window in line with STORE (null: no text) and tells what changed. VISIBLE is the first
    // segment that is seen; AT_END is true while the view stays at the end. SPACE_SUBSTITUTE is as in
    // shown_text.
    Change refresh(const TextStore *store, std::size_t visible, bool at_end, int space_substitute);

    // The text of the window.
    const QString &text() const { return text_; }
    // The number of the segment in which the character at OFFSET lies, and the offset at which a segment
    // begins (the end of the text for one outside the window).
    std::size_t segment_of(qsizetype offset) const;
    qsizetype start_of(std::size_t segment) const;
    // The number of the window's first segment, and the number of segments in it.
    std::size_t first_segment() const { return first_; }
    std::size_t segment_count() const { return starts_.size(); }

  private:
    bool must_move(const TextStore &store, std::size_t visible, bool at_end) const;
    void drop_front(const TextStore &store, Change &change);
    void add_segments(const TextStore &store, int space_substitute);

    QString text_;
    std::vector<qsizetype> starts_; // the offset of each segment
    std::size_t first_ = 0, bytes_ = 0, generation_ = 0;
    bool follows_ = true;
};

} // namespace quillon::desktop

#endif
