// What is marked in the console, the selection and the hits of a search: where it is on screen, how it is
// drawn and how it gets to the clipboard.
#include <QApplication>
#include <QClipboard>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "desktop/console_access.h"
#include "desktop/console_search.h"
#include "desktop/console_view.h"
#include "state/job_state.h"

namespace quillon::desktop {

namespace {

constexpr int hit_tint = 72; // of 255: how much of the highlight colour a hit has

// The index of the first character of a row; that of the text's end behind the last row.
qsizetype row_start(const SegmentLayout &layout, int row) {
    qsizetype least = 0, most = layout.text().size();
    while (least < most) {
        const qsizetype middle = (least + most) / 2;
        if (layout.row_of(middle) < row)
            least = middle + 1;
        else
            most = middle;
    }
    return least;
}

// The distance of the character INDEX from the left end of the row; that of the right edge where the text
// goes on in the next row.
qreal edge_x(const SegmentLayout &layout, int row, qsizetype index, const TextMetrics &metrics) {
    return layout.row_of(index) == row ? std::min(layout.x_of(index), metrics.width) : metrics.width;
}

bool is_right_to_left(QChar character) {
    return character.direction() == QChar::DirR || character.direction() == QChar::DirAL;
}

} // namespace

void ConsoleView::draw_row(QPainter &painter, Place place, QPointF at, const std::vector<ByteRange> &hits) {
    const SegmentLayout &layout = layout_of(place.segment);
    QColor tint = palette().color(QPalette::Highlight);
    tint.setAlpha(hit_tint);
    const TextStore::Segment segment = store_->segment(place.segment);
    auto hit = std::lower_bound(hits.begin(), hits.end(), segment.start,
                                [](ByteRange one, std::size_t start) { return one.end <= start; });
    for (; hit != hits.end() && hit->start < segment.end; ++hit)
        if (const QRectF rect = range_rect(place, at, *hit); !rect.isEmpty())
            painter.fillRect(rect, tint);
    layout.draw(painter, place.row, at);
    const QRectF selected = range_rect(place, at, selection());
    if (selected.isEmpty())
        return;
    painter.save();
    painter.setClipRect(selected);
    painter.fillRect(selected, palette().color(QPalette::Highlight));
    painter.setPen(palette().color(QPalette::HighlightedText));
    layout.draw(painter, place.row, at);
    painter.restore();
}

// The part of the row, drawn at AT, that shows bytes of RANGE; empty when none does. It goes on to the right
// edge where the range goes on after the row.
QRectF ConsoleView::range_rect(Place place, QPointF at, ByteRange range) {
    const TextStore::Segment segment = store_->segment(place.segment);
    if (range.empty() || range.end <= segment.start || range.start > segment.end)
        return {};
    const SegmentLayout &layout = layout_of(place.segment);
    const bool last_row = place.row + 1 == layout.rows();
    const qsizetype row_begin = row_start(layout, place.row), row_end = row_start(layout, place.row + 1);
    const qsizetype begin = range.start <= segment.start ? 0 : index_at(place.segment, range.start);
    const qsizetype end =
        range.end >= segment.end ? layout.text().size() : index_at(place.segment, range.end);
    const bool goes_on = last_row ? range.end > segment.end && begin <= row_end : end > row_end;
    const qsizetype from = std::max(begin, row_begin), to = std::min(end, row_end);
    if (from > to || (from == to && !goes_on) || (from == row_end && !last_row))
        return {};
    qreal left = edge_x(layout, place.row, from, metrics_), right = left;
    if (const QString text = layout.row_text(place.row);
        std::any_of(text.begin(), text.end(), is_right_to_left)) {
        for (qsizetype index = from; index <= to; ++index) {
            const qreal x = edge_x(layout, place.row, index, metrics_);
            left = std::min(left, x);
            right = std::max(right, x);
        }
    } else {
        right = edge_x(layout, place.row, to, metrics_);
    }
    if (goes_on)
        right = metrics_.width;
    return {at.x() + left, at.y(), right - left, metrics_.row_height};
}

// The hits of the search that are seen in whole or in part.
std::vector<ByteRange> ConsoleView::visible_hits() {
    if (!hits_shown_ || hits_shown_->hits() == 0)
        return {};
    std::size_t last = top_.segment;
    for (int rows = layout_of(last).rows() - top_.row; rows < visible_rows() && last + 1 < store_->segments();
         rows += layout_of(last).rows())
        ++last;
    const std::size_t top = top_offset(), length = hits_shown_->pattern().size();
    return hits_shown_->hits_in(*store_, {top - std::min(top, length), store_->segment(last).end});
}

QString ConsoleView::text_of(ByteRange range) const {
    QByteArray bytes(static_cast<qsizetype>(range.end - range.start), Qt::Uninitialized);
    store_->copy(range.start, range.end, bytes.data(), range.end - range.start);
    bytes.replace('\r', '\n');
    if (space_char > 0 && space_char < 0x80)
        bytes.replace(static_cast<char>(space_char), ' ');
    return QString::fromUtf8(bytes);
}

void ConsoleView::copy_all() const {
    if (!store_)
        return;
    const ByteRange selected = selection();
    const bool whole = !select_text_ || selected.empty();
    QGuiApplication::clipboard()->setText(text_of(whole ? ByteRange{0, store_->size()} : selected));
}

// The row that shows the character at OFFSET.
ConsoleView::Place ConsoleView::place_at(std::size_t offset) {
    const std::size_t segment = store_->segment_at(offset);
    return {segment, layout_of(segment).row_of(index_at(segment, offset))};
}

// The index in the layout of a segment of the character at OFFSET.
qsizetype ConsoleView::index_at(std::size_t segment, std::size_t offset) const {
    char bytes[TextStore::segment_limit];
    const TextStore::Segment whole = store_->segment(segment);
    const std::size_t end = std::clamp(offset, whole.start, whole.end);
    return static_cast<qsizetype>(shown_size(bytes, store_->copy(whole.start, end, bytes, sizeof bytes)));
}

// The offset of the character INDEX in the layout of the place's segment.
std::size_t ConsoleView::offset_in(Place place, qsizetype index) const {
    char bytes[TextStore::segment_limit];
    const TextStore::Segment whole = store_->segment(place.segment);
    const std::size_t size = store_->copy(whole.start, whole.end, bytes, sizeof bytes);
    return whole.start + bytes_of_shown(bytes, size, static_cast<std::size_t>(index));
}

// The offset of the character of the row at distance X from its left end; with NEAREST that of the border of
// two characters which is nearest to X.
std::size_t ConsoleView::offset_in_row(Place place, qreal x, bool nearest) {
    const SegmentLayout &layout = layout_of(place.segment);
    const auto edge = [&](qsizetype index) { return edge_x(layout, place.row, index, metrics_); };
    const qsizetype begin = row_start(layout, place.row), end = row_start(layout, place.row + 1);
    qsizetype index = std::clamp(layout.index_at(place.row, x), begin, end);
    if (index > begin && edge(index) > x)
        --index;
    if (nearest && index < end && x - edge(index) > std::abs(edge(index + 1) - edge(index)) / 2)
        ++index;
    if (index > begin && index < layout.text().size() && layout.text()[index].isLowSurrogate())
        --index;
    return offset_in(place, index);
}

// The same for a point of the viewport; one above or below the rows counts as the first or last visible row.
std::size_t ConsoleView::offset_at_point(QPoint point, bool nearest) {
    const auto row = static_cast<int>(std::floor((point.y() - margin_) / metrics_.row_height));
    const int wanted = std::clamp(row, 0, visible_rows() - 1);
    const Place place = moved(top_, wanted);
    int reached = place.row - top_.row;
    for (std::size_t segment = top_.segment; segment < place.segment && reached < wanted; ++segment)
        reached += layout_of(segment).rows();
    if (reached < wanted && row >= wanted)
        return store_->size();
    return offset_in_row(place, point.x() - margin_, nearest);
}

std::size_t ConsoleView::top_offset() {
    if (!store_)
        return 0;
    const SegmentLayout &layout = layout_of(std::min(top_.segment, store_->segments() - 1));
    return offset_in(top_, row_start(layout, std::min(top_.row, layout.rows() - 1)));
}

// Scrolls so that the row of OFFSET is seen, with that many rows above it when the text has to be scrolled up
// to it, or below it when down.
void ConsoleView::show_offset(std::size_t offset, int rows_above, int rows_below) {
    stale_ = true;
    settle();
    const Place place = place_at(offset);
    if (place < top_)
        go_to(moved(place, -rows_above));
    else if (place > moved(top_, visible_rows() - 1))
        go_to(moved(place, rows_below + 1 - visible_rows()));
}

void ConsoleView::selection_changed() {
    viewport()->update();
    tell_assistive_technology(this);
    if (changed_)
        changed_();
}

void ConsoleView::set_select_text(bool on) {
    if (on == select_text_)
        return;
    select_text_ = on;
    dragging_ = false;
    drag_timer_.stop();
    clear_selection();
}

void ConsoleView::select(ByteRange range) {
    if (!store_)
        return;
    selection_.set(*store_, range);
    at_row_end_ = false;
    goal_x_ = -1;
    show_offset(range.start, visible_rows() / 3, visible_rows() / 2);
    selection_changed();
}

void ConsoleView::select_all() {
    if (!store_)
        return;
    selection_.set(*store_, {0, store_->size()});
    selection_changed();
}

void ConsoleView::clear_selection() {
    if (!selection_.begun())
        return;
    selection_.clear();
    selection_changed();
}

void ConsoleView::show_hits(const ConsoleSearch *search) {
    hits_shown_ = search;
    viewport()->update();
}

} // namespace quillon::desktop
