#include "desktop/console_view.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QPainter>
#include <QScrollBar>
#include <QStyleOptionFocusRect>
#include <QWindow>
#include <algorithm>
#include <cmath>
#include <ctime>

#include "desktop/console_access.h"
#include "state/job_state.h"

namespace quillon::desktop {

namespace {

constexpr std::int64_t frame_milliseconds = 16;
// All layouts are dropped once they hold more bytes of text than this.
constexpr std::size_t layout_bytes = 1 << 18;
constexpr std::size_t layout_cost = 64; // bytes that an empty layout counts as
// The steps of the scroll bar for each segment, and the number of segments from which there is only one.
constexpr std::size_t fine_steps = 64, fine_segments = 1 << 24;
constexpr int caret_width = 2, hint_margin = 24;
constexpr int smallest_font = 4, largest_font = 144;

// The time in milliseconds, from a coarse clock that is cheap to read.
std::int64_t coarse_now() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return static_cast<std::int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

std::size_t steps_of(const TextStore &store) {
    return store.segments() < fine_segments ? fine_steps : 1;
}

bool is_fixed_width(const QFont &font) {
    const QFontMetricsF measured(font);
    return std::abs(measured.horizontalAdvance(u'i') - measured.horizontalAdvance(u'W')) < 0.01;
}

} // namespace

QFont fixed_width_font(const QFont &wanted) {
    if (is_fixed_width(wanted))
        return wanted;
    for (const QString &family : QFontDatabase::families(QFontDatabase::Latin)) {
        QFont font = wanted;
        font.setFamilies({family});
        if (QFontDatabase::isFixedPitch(family) && is_fixed_width(font))
            return font;
    }
    return wanted;
}

ConsoleView::ConsoleView(QWidget *parent) : QAbstractScrollArea(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_InputMethodEnabled);
    setAccessibleName(tr("Console"));
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    horizontalScrollBar()->setRange(0, 0);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    viewport()->setBackgroundRole(QPalette::Base);
    connect(verticalScrollBar(), &QAbstractSlider::actionTriggered, this, [this](int action) {
        const int page = std::max(1, visible_rows() - 1);
        const int rows = action == QAbstractSlider::SliderSingleStepAdd   ? 1
                         : action == QAbstractSlider::SliderSingleStepSub ? -1
                         : action == QAbstractSlider::SliderPageStepAdd   ? page
                         : action == QAbstractSlider::SliderPageStepSub   ? -page
                                                                          : 0;
        if (rows != 0)
            scroll_rows(rows);
    });
}

ConsoleView::~ConsoleView() = default;

void ConsoleView::attach(TextStore *store) {
    store_ = store;
    selection_.clear();
    drop_layouts();
    top_ = {};
    at_end_ = true;
    stale_ = true;
    viewport()->update();
}

void ConsoleView::set_text_font(const QFont &font) {
    set_font_ = font;
    zoom(0);
}

void ConsoleView::zoom(int steps) {
    QFont font = set_font_;
    if (steps != 0) {
        font = metrics_.font;
        font.setPointSize(std::clamp(QFontInfo(font).pointSize() + steps, smallest_font, largest_font));
    }
    metrics_.set_font(font);
    lay_out_anew();
}

void ConsoleView::set_margin(int margin) {
    margin_ = margin;
    metrics_.set_width(viewport()->width() - 2 * margin_);
    lay_out_anew();
}

// Lays the text out by the measures of now; the first character that is seen stays in the first row.
void ConsoleView::lay_out_anew() {
    const bool known = store_ && generation_ == store_->generation();
    const std::size_t top = known ? top_offset() : 0;
    drop_layouts();
    top_ = known ? place_at(top) : Place{};
    mark_stale();
}

void ConsoleView::mark_stale() {
    stale_ = true;
    viewport()->update();
}

void ConsoleView::drop_layouts() {
    layouts_.clear();
    laid_out_bytes_ = 0;
}

void ConsoleView::refresh(bool force) {
    if (!force && !stale_)
        return;
    if (!force && coarse_now() - painted_at_ < frame_milliseconds)
        return;
    const QWindow *const window = this->window()->windowHandle();
    if (!window || !window->isExposed())
        return;
    stale_ = true;
    settle();
    viewport()->repaint();
    // A busy shell still answers the display's own messages; the person's keys and clicks wait.
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents | QEventLoop::ExcludeSocketNotifiers);
}

int ConsoleView::visible_rows() const {
    const int height = viewport()->height() - 2 * margin_;
    return std::max(1, static_cast<int>(height / metrics_.row_height));
}

const SegmentLayout &ConsoleView::layout_of(std::size_t number) {
    const TextStore::Segment segment = store_->segment(number);
    const std::size_t size = segment.end - segment.start;
    auto &[laid_out, layout] = layouts_[number];
    if (layout && laid_out == size)
        return *layout;
    char bytes[TextStore::segment_limit];
    store_->copy(segment.start, segment.end, bytes, sizeof bytes);
    laid_out_bytes_ += size + layout_cost;
    laid_out = size;
    layout = std::make_unique<SegmentLayout>(bytes, size, metrics_, space_char);
    return *layout;
}

// The place ROWS further down (up when negative), within the text.
ConsoleView::Place ConsoleView::moved(Place place, int rows) {
    place.row += rows;
    while (place.row < 0 && place.segment > 0)
        place.row += layout_of(--place.segment).rows();
    while (place.row > 0 && place.row >= layout_of(place.segment).rows()) {
        const int passed = layout_of(place.segment).rows();
        if (place.segment + 1 >= store_->segments()) {
            place.row = passed - 1;
            break;
        }
        place.row -= passed;
        ++place.segment;
    }
    place.row = std::max(0, place.row);
    return place;
}

// The first visible row when the view shows the end. An empty last row counts only when it has the caret.
ConsoleView::Place ConsoleView::end_top() {
    const std::size_t last = store_->segments() - 1;
    Place place{last, layout_of(last).rows() - 1};
    int rows = visible_rows() - 1;
    if (!caret_shown_ && last > 0 && store_->segment(last).start == store_->size())
        ++rows;
    return moved(place, -rows);
}

int ConsoleView::bar_value(Place place) {
    const std::size_t steps = steps_of(*store_);
    const auto rows = static_cast<std::size_t>(layout_of(place.segment).rows());
    return static_cast<int>(place.segment * steps + static_cast<std::size_t>(place.row) * steps / rows);
}

ConsoleView::Place ConsoleView::place_of(int value) {
    const std::size_t steps = steps_of(*store_);
    const std::size_t at = static_cast<std::size_t>(std::max(0, value));
    Place place{std::min(at / steps, store_->segments() - 1), 0};
    const auto rows = static_cast<std::size_t>(layout_of(place.segment).rows());
    place.row = static_cast<int>(std::min(rows - 1, (at % steps * rows + steps - 1) / steps));
    return place;
}

void ConsoleView::update_bar(Place end) {
    settling_ = true;
    QScrollBar *const bar = verticalScrollBar();
    const auto steps = static_cast<int>(steps_of(*store_));
    bar->setRange(0, bar_value(end));
    bar->setPageStep(std::max(1, visible_rows() * steps));
    bar->setSingleStep(steps);
    bar->setValue(bar_value(top_));
    settling_ = false;
}

void ConsoleView::settle() {
    if (!store_ || !stale_)
        return;
    stale_ = false;
    if (generation_ != store_->generation() || laid_out_bytes_ > layout_bytes) {
        generation_ = store_->generation();
        drop_layouts();
    }
    const Place end = end_top();
    if (at_end_ || top_ > end)
        top_ = end;
    update_bar(end);
    selection_.clear_if_outdated(*store_);
    tell_assistive_technology(this);
    if (changed_)
        changed_();
}

void ConsoleView::go_to(Place place) {
    const Place end = end_top();
    top_ = std::min(place, end);
    at_end_ = top_ == end;
    update_bar(end);
    viewport()->update();
}

void ConsoleView::scroll_rows(int rows) {
    if (!store_)
        return;
    stale_ = true;
    settle();
    go_to(moved(top_, rows));
}

void ConsoleView::scroll_to_start() {
    if (store_)
        go_to({});
}

void ConsoleView::scroll_to_end() {
    if (store_)
        go_to(end_top());
}

void ConsoleView::show_segment(std::size_t segment) {
    const int y = store_ ? y_of(segment) : 0;
    if (store_ && (y < 0 || y >= viewport()->height() - margin_))
        go_to({segment, 0});
}

void ConsoleView::scrollContentsBy(int, int) {
    if (settling_ || !store_)
        return;
    QScrollBar *const bar = verticalScrollBar();
    at_end_ = bar->value() >= bar->maximum();
    top_ = at_end_ ? end_top() : place_of(bar->value());
    viewport()->update();
}

void ConsoleView::resizeEvent(QResizeEvent *) {
    metrics_.set_width(viewport()->width() - 2 * margin_);
    lay_out_anew();
}

void ConsoleView::paintEvent(QPaintEvent *event) {
    QPainter painter(viewport());
    painter.fillRect(event->rect(), palette().color(QPalette::Base));
    painter.setFont(metrics_.font);
    painter.setPen(palette().color(QPalette::Text));
    if (store_) {
        settle();
        draw_rows(painter);
        if (caret_shown_ && caret_on_)
            painter.fillRect(caret_rect(), palette().color(QPalette::Text));
    }
    if (!store_ || store_->size() == 0)
        draw_hint(painter);
    if (keyboard_focus_ && hasFocus()) {
        QStyleOptionFocusRect option;
        option.initFrom(viewport());
        option.state |= QStyle::State_KeyboardFocusChange;
        option.backgroundColor = palette().color(QPalette::Base);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
    }
    painted_at_ = coarse_now();
}

void ConsoleView::draw_rows(QPainter &painter) {
    const std::vector<ByteRange> hits = visible_hits();
    const int bottom = viewport()->height() - margin_;
    qreal y = margin_;
    Place place = top_;
    for (; place.segment < store_->segments() && y < bottom; place = {place.segment + 1, 0}) {
        const int rows = layout_of(place.segment).rows();
        for (; place.row < rows && y + metrics_.row_height <= bottom + 1;
             ++place.row, y += metrics_.row_height)
            draw_row(painter, place, QPointF(margin_, y), hits);
        if (place.row < rows)
            break;
    }
}

QString ConsoleView::hint() {
    return tr("Choose File > Typeset File... (Ctrl+O) to typeset a document.");
}

void ConsoleView::draw_hint(QPainter &painter) {
    painter.setFont(font());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    const QRect area = viewport()->rect().adjusted(hint_margin, hint_margin, -hint_margin, -hint_margin);
    painter.drawText(area, Qt::AlignCenter | Qt::TextWordWrap, hint());
}

QRect ConsoleView::caret_rect() {
    const std::size_t last = store_->segments() - 1;
    const SegmentLayout &layout = layout_of(last);
    const int y = y_of(last) + static_cast<int>((layout.rows() - 1) * metrics_.row_height);
    return {margin_ + static_cast<int>(layout.end_x()), y, caret_width,
            static_cast<int>(metrics_.row_height)};
}

int ConsoleView::y_of(std::size_t segment) {
    qreal y = margin_ - top_.row * metrics_.row_height;
    const int bottom = viewport()->height();
    for (std::size_t at = top_.segment; at < segment && y < bottom; ++at)
        y += layout_of(at).rows() * metrics_.row_height;
    return segment < top_.segment ? -1 : static_cast<int>(y);
}

QString ConsoleView::row_text(int index) {
    if (!store_)
        return {};
    settle();
    Place place = top_;
    for (int row = 0; place.segment < store_->segments(); ++row) {
        const SegmentLayout &layout = layout_of(place.segment);
        if (row == index)
            return layout.row_text(place.row);
        if (++place.row >= layout.rows())
            place = {place.segment + 1, 0};
    }
    return {};
}

void ConsoleView::show_caret(bool shown) {
    caret_shown_ = caret_on_ = shown;
    blinked_at_ = coarse_now();
    mark_stale();
}

void ConsoleView::blink_caret() {
    const int period = QApplication::cursorFlashTime() / 2;
    if (!caret_shown_ || !store_ || period <= 0 || coarse_now() - blinked_at_ < period)
        return;
    blinked_at_ = coarse_now();
    caret_on_ = !caret_on_;
    viewport()->update(caret_rect());
}

void ConsoleView::changeEvent(QEvent *event) {
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange ||
        event->type() == QEvent::ActivationChange)
        viewport()->update();
}

} // namespace quillon::desktop
