#include "desktop/console_access.h"

#include <QScrollBar>
#include <algorithm>

#include "desktop/console_view.h"
#include "state/job_state.h"

namespace quillon::desktop {

ConsoleAccess::ConsoleAccess(ConsoleView *view)
    : QAccessibleWidget(view, QAccessible::Terminal, view->accessibleName()), view_(view) {}

// Brings the text up to date first, since a listener may ask before the view was painted.
const SpokenText &ConsoleAccess::spoken() const {
    refresh();
    return spoken_;
}

void ConsoleAccess::refresh() const {
    const SpokenText::Change change =
        spoken_.refresh(view_->store(), view_->top().segment, view_->at_end(), space_char);
    const QString &text = spoken_.text();
    if (change.front_removed > 0) {
        QAccessibleTextRemoveEvent event(view_, 0, QString(change.front_removed, u' '));
        QAccessible::updateAccessibility(&event);
    }
    const auto from = static_cast<int>(change.changed_from);
    if (!change.removed.isEmpty()) {
        QAccessibleTextRemoveEvent event(view_, from, change.removed);
        QAccessible::updateAccessibility(&event);
    }
    if (from < text.size()) {
        QAccessibleTextInsertEvent event(view_, from, text.mid(from));
        QAccessible::updateAccessibility(&event);
        QAccessibleTextCursorEvent cursor(view_, static_cast<int>(text.size()));
        QAccessible::updateAccessibility(&cursor);
    }
    const bool empty = !view_->store() || view_->store()->size() == 0;
    if (empty != was_empty_) {
        was_empty_ = empty;
        QAccessibleEvent event(view_, QAccessible::DescriptionChanged);
        QAccessible::updateAccessibility(&event);
    }
    tell_selection();
}

void ConsoleAccess::tell_selection() const {
    const ByteRange selected = view_->selection();
    if (selected == told_)
        return;
    told_ = selected;
    QAccessibleTextSelectionEvent event(view_, offset_of(selected.start), offset_of(selected.end));
    QAccessible::updateAccessibility(&event);
}

// The offset in the spoken text of a byte of the console's text; the nearest one for a byte outside of it.
int ConsoleAccess::offset_of(std::size_t byte) const {
    const TextStore *const store = view_->store();
    if (!store)
        return 0;
    const std::size_t segment = store->segment_at(byte), first = spoken_.first_segment();
    if (segment < first)
        return 0;
    if (segment >= first + spoken_.segment_count())
        return static_cast<int>(spoken_.text().size());
    char bytes[TextStore::segment_limit];
    const TextStore::Segment whole = store->segment(segment);
    const std::size_t size = store->copy(whole.start, std::min(byte, whole.end), bytes, sizeof bytes);
    return static_cast<int>(spoken_.start_of(segment)) + static_cast<int>(shown_size(bytes, size));
}

std::size_t ConsoleAccess::byte_of(int offset) const {
    const TextStore *const store = view_->store();
    const int within = std::clamp(offset, 0, static_cast<int>(spoken_.text().size()));
    const std::size_t segment = spoken_.segment_of(within);
    char bytes[TextStore::segment_limit];
    const TextStore::Segment whole = store->segment(segment);
    const std::size_t size = store->copy(whole.start, whole.end, bytes, sizeof bytes);
    return whole.start +
           bytes_of_shown(bytes, size, static_cast<std::size_t>(within - spoken_.start_of(segment)));
}

QAccessible::State ConsoleAccess::state() const {
    QAccessible::State state = QAccessibleWidget::state();
    state.readOnly = true;
    state.multiLine = true;
    state.selectableText = view_->select_text();
    return state;
}

void *ConsoleAccess::interface_cast(QAccessible::InterfaceType type) {
    if (type == QAccessible::TextInterface)
        return static_cast<QAccessibleTextInterface *>(this);
    return QAccessibleWidget::interface_cast(type);
}

int ConsoleAccess::selectionCount() const {
    return view_->selection().empty() ? 0 : 1;
}

void ConsoleAccess::selection(int, int *start, int *end) const {
    spoken();
    const ByteRange selected = view_->selection();
    *start = selected.empty() ? 0 : offset_of(selected.start);
    *end = selected.empty() ? 0 : offset_of(selected.end);
}

void ConsoleAccess::addSelection(int start, int end) {
    setSelection(0, start, end);
}

void ConsoleAccess::removeSelection(int) {
    if (view_->select_text())
        view_->clear_selection();
}

void ConsoleAccess::setSelection(int, int start, int end) {
    if (!view_->select_text() || !view_->store())
        return;
    spoken();
    view_->select({byte_of(std::min(start, end)), byte_of(std::max(start, end))});
}

int ConsoleAccess::cursorPosition() const {
    return characterCount();
}

QString ConsoleAccess::text(QAccessible::Text kind) const {
    if (kind == QAccessible::Value)
        return spoken().text();
    const bool empty = !view_->store() || view_->store()->size() == 0;
    return kind == QAccessible::Description && empty ? ConsoleView::hint() : QAccessibleWidget::text(kind);
}

QString ConsoleAccess::text(int start, int end) const {
    return spoken().text().mid(start, std::max(0, end - start));
}

int ConsoleAccess::characterCount() const {
    return static_cast<int>(spoken().text().size());
}

QRect ConsoleAccess::characterRect(int offset) const {
    const SpokenText &spoken = this->spoken();
    if (!view_->store() || offset < 0 || offset > spoken.text().size())
        return {};
    const std::size_t segment = spoken.segment_of(offset);
    const int top = view_->y_of(segment);
    if (segment < view_->top().segment)
        return {};
    const SegmentLayout &layout = view_->layout_of(segment);
    const qsizetype index = std::min(offset - spoken.start_of(segment), layout.text().size());
    const TextMetrics &metrics = view_->metrics();
    const QPointF at(view_->margin() + layout.x_of(index), top + layout.row_of(index) * metrics.row_height);
    return {view_->viewport()->mapToGlobal(at.toPoint()), QSizeF(metrics.cell, metrics.row_height).toSize()};
}

int ConsoleAccess::offsetAtPoint(const QPoint &point) const {
    const SpokenText &spoken = this->spoken();
    const QPoint at = view_->viewport()->mapFromGlobal(point);
    if (!view_->store() || !view_->viewport()->rect().contains(at))
        return -1;
    const std::size_t last = spoken.first_segment() + spoken.segment_count();
    for (std::size_t segment = view_->top().segment; segment < last; ++segment) {
        const SegmentLayout &layout = view_->layout_of(segment);
        const int row = static_cast<int>((at.y() - view_->y_of(segment)) / view_->metrics().row_height);
        if (row < 0)
            return -1;
        if (row < layout.rows())
            return static_cast<int>(spoken.start_of(segment) +
                                    layout.index_at(row, at.x() - view_->margin()));
    }
    return -1;
}

void ConsoleAccess::scrollToSubstring(int start, int) {
    if (!view_->store())
        return;
    const std::size_t segment = spoken().segment_of(start);
    view_->show_segment(segment);
}

QString ConsoleAccess::attributes(int, int *start, int *end) const {
    *start = 0;
    *end = characterCount();
    return {};
}

namespace {

QAccessibleInterface *console_interface(const QString &, QObject *object) {
    auto *const view = dynamic_cast<ConsoleView *>(object);
    return view ? new ConsoleAccess(view) : nullptr;
}

} // namespace

void offer_console_access() {
    QAccessible::installFactory(console_interface);
}

void tell_assistive_technology(ConsoleView *view) {
    if (!QAccessible::isActive())
        return;
    if (auto *const access = dynamic_cast<ConsoleAccess *>(QAccessible::queryAccessibleInterface(view)))
        access->refresh();
}

} // namespace quillon::desktop
