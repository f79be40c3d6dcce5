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
}

QAccessible::State ConsoleAccess::state() const {
    QAccessible::State state = QAccessibleWidget::state();
    state.readOnly = true;
    state.multiLine = true;
    state.selectableText = false;
    return state;
}

void *ConsoleAccess::interface_cast(QAccessible::InterfaceType type) {
    if (type == QAccessible::TextInterface)
        return static_cast<QAccessibleTextInterface *>(this);
    return QAccessibleWidget::interface_cast(type);
}

void ConsoleAccess::selection(int, int *start, int *end) const {
    *start = *end = 0;
}

int ConsoleAccess::cursorPosition() const {
    return characterCount();
}

QString ConsoleAccess::text(QAccessible::Text kind) const {
    return kind == QAccessible::Value ? spoken().text() : QAccessibleWidget::text(kind);
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
