// The part of the console's text that assistive technology reads.
//
// A console holds up to millions of lines; what is offered is a window of whole segments on it: while the
// view stays at the end, the recent text, of which the front is dropped in big steps so that offsets move
// seldom; while the person has scrolled up, the text around what they see. Offsets are characters (UTF-16) of
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
    // The window holds at most about largest bytes; it is cut back to kept.
    static constexpr std::size_t largest = 1 << 18, kept = 1 << 17;

    struct Change {
        bool replaced = false;       // all is new
        qsizetype front_removed = 0; // characters dropped at the front
        qsizetype changed_from = 0;  // after that, everything from here on is new
        QString removed;             // what stood there
    };

    // VISIBLE is the first segment seen, AT_END whether the view stays at the end.
    Change refresh(const TextStore *store, std::size_t visible, bool at_end, int space_substitute);

    const QString &text() const { return text_; }
    // The segment that character OFFSET lies in, and where that segment begins.
    std::size_t segment_of(qsizetype offset) const;
    qsizetype start_of(std::size_t segment) const;
    std::size_t first_segment() const { return first_; }
    std::size_t segment_count() const { return starts_.size(); }

  private:
    bool must_move(const TextStore &store, std::size_t visible, bool at_end) const;
    void drop_front(const TextStore &store, Change &change);
    void add_segments(const TextStore &store, int space_substitute);

    QString text_;
    std::vector<qsizetype> starts_; // of the segments, in characters
    std::size_t first_ = 0, bytes_ = 0, generation_ = 0;
    bool follows_ = true;
};

} // namespace quillon::desktop

#endif
