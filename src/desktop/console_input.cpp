// The console's keys, clicks and wheel. Keys and clicks become events for the shell; the rest scrolls and,
// where the person may select text, selects it.
#include <QApplication>
#include <QClipboard>
#include <QFocusEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QStyleHints>
#include <QTimerEvent>
#include <QWheelEvent>
#include <algorithm>

#include "desktop/console_view.h"
#include "desktop/event_pump.h"

namespace quillon::desktop {

namespace {

constexpr std::uint32_t key_return = 13, key_backspace = 8, key_tab = 9, key_escape = 27, key_delete = 127;
constexpr int wheel_notch = 120, rows_a_notch = 3;
constexpr int drag_milliseconds =
    40; // between two steps of scrolling while the mouse is dragged past the edge

// The character for a command key, or for a key that types no text; 0 for all others.
std::uint32_t key_character(const QKeyEvent &event) {
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return key_return;
    case Qt::Key_Backspace:
        return key_backspace;
    case Qt::Key_Delete:
        return key_delete;
    case Qt::Key_Tab:
        return key_tab;
    case Qt::Key_Escape:
        return key_escape;
    default:
        break;
    }
    if (!(event.modifiers() & Qt::ControlModifier) || event.key() < ' ' || event.key() >= 0x7F)
        return 0;
    const int key = event.key();
    return static_cast<std::uint32_t>(key >= 'A' && key <= 'Z' ? key - 'A' + 'a' : key);
}

void post_text(const QString &text, std::uint16_t what, std::uint16_t modifiers) {
    for (const char byte : text.toUtf8())
        post_event(what, static_cast<unsigned char>(byte), modifiers);
}

bool is_modifier(int key) {
    return key == Qt::Key_Shift || key == Qt::Key_Control || key == Qt::Key_Alt || key == Qt::Key_AltGr ||
           key == Qt::Key_Meta || key == Qt::Key_CapsLock || key == Qt::Key_NumLock;
}

} // namespace

// Where a selection by keys begins: at the end of the running one, else at the end of the text or, when that
// is not seen, at the first visible row.
std::size_t ConsoleView::keyboard_start() {
    if (selection_.begun())
        return selection_.active();
    return at_end_ ? store_->size() : top_offset();
}

std::size_t ConsoleView::moved_by_rows(std::size_t from, int rows) {
    Place place = place_at(from);
    if (goal_x_ < 0)
        goal_x_ = at_row_end_ ? metrics_.width : layout_of(place.segment).x_of(index_at(place.segment, from));
    if (at_row_end_)
        place = moved(place, -1);
    const Place target = moved(place, rows);
    at_row_end_ = false;
    if (target == place)
        return rows < 0 ? 0 : store_->size();
    const std::size_t offset = offset_in_row(target, goal_x_, true);
    at_row_end_ = place_at(offset) != target;
    return offset;
}

// The offset to which the key moves the end of the selection from FROM; FROM for a key that does not move it.
std::size_t ConsoleView::moved_by_key(const QKeyEvent *event, std::size_t from) {
    const bool control = event->modifiers() & Qt::ControlModifier;
    const int key = event->key(), page = std::max(1, visible_rows() - 1);
    if (key == Qt::Key_PageUp || key == Qt::Key_PageDown)
        return moved_by_rows(from, key == Qt::Key_PageUp ? -page : page);
    if (!control && (key == Qt::Key_Up || key == Qt::Key_Down))
        return moved_by_rows(from, key == Qt::Key_Up ? -1 : 1);
    const bool behind_row = at_row_end_;
    at_row_end_ = false;
    goal_x_ = -1;
    if (key == Qt::Key_Left)
        return control ? previous_word(*store_, from) : previous_character(*store_, from);
    if (key == Qt::Key_Right)
        return control ? next_word(*store_, from) : next_character(*store_, from);
    if (key == Qt::Key_Up)
        return line_at(*store_, previous_character(*store_, from)).start;
    if (key == Qt::Key_Down)
        return line_at(*store_, from).end;
    if (control)
        return key == Qt::Key_Home ? 0 : store_->size();
    Place place = place_at(from);
    if (behind_row)
        place = moved(place, -1);
    if (key == Qt::Key_Home)
        return offset_in_row(place, 0, false);
    const std::size_t end = offset_in_row(place, metrics_.width, true);
    at_row_end_ = place_at(end) != place;
    return end;
}

bool ConsoleView::select_by_key(const QKeyEvent *event) {
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    if (!select_text_ || !store_ || modifiers & (Qt::AltModifier | Qt::MetaModifier))
        return false;
    if (event->key() == Qt::Key_A && modifiers == Qt::ControlModifier) {
        select_all();
        return true;
    }
    constexpr int moving[] = {Qt::Key_Left, Qt::Key_Right, Qt::Key_Up,     Qt::Key_Down,
                              Qt::Key_Home, Qt::Key_End,   Qt::Key_PageUp, Qt::Key_PageDown};
    if (!(modifiers & Qt::ShiftModifier) ||
        std::find(std::begin(moving), std::end(moving), event->key()) == std::end(moving))
        return false;
    stale_ = true;
    settle();
    if (!selection_.begun())
        selection_.begin(*store_, keyboard_start(), SelectionUnit::character);
    const std::size_t offset = moved_by_key(event, keyboard_start());
    selection_.extend_by_characters(*store_, offset);
    show_offset(at_row_end_ ? previous_character(*store_, offset) : offset, 0, 0);
    selection_changed();
    return true;
}

bool ConsoleView::scroll_by_key(const QKeyEvent *event) {
    const bool control = event->modifiers() & Qt::ControlModifier;
    switch (event->key()) {
    case Qt::Key_PageUp:
        scroll_rows(-std::max(1, visible_rows() - 1));
        return true;
    case Qt::Key_PageDown:
        scroll_rows(std::max(1, visible_rows() - 1));
        return true;
    case Qt::Key_Up:
        scroll_rows(-1);
        return true;
    case Qt::Key_Down:
        scroll_rows(1);
        return true;
    case Qt::Key_Home:
        if (control)
            scroll_to_start();
        return control;
    case Qt::Key_End:
        if (control)
            scroll_to_end();
        return control;
    default:
        return false;
    }
}

// While the menus are disabled this view takes the Alt key and its letters: otherwise the menu bar would take
// the keyboard for a menu that does not open, and keep it.
bool ConsoleView::event(QEvent *event) {
    if (event->type() == QEvent::ShortcutOverride && !commands_admitted_) {
        const auto *const key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_Alt || key->modifiers() & Qt::AltModifier) {
            event->accept();
            return true;
        }
    }
    return QAbstractScrollArea::event(event);
}

void ConsoleView::keyPressEvent(QKeyEvent *event) {
    event->accept();
    if (select_by_key(event) || scroll_by_key(event))
        return;
    const bool control = event->modifiers() & Qt::ControlModifier;
    if (!(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) &&
        !is_modifier(event->key()))
        clear_selection();
    if (control && event->key() == Qt::Key_C && !commands_admitted_) {
        copy_all();
        return;
    }
    const std::uint16_t what = event->isAutoRepeat() ? autoKey : keyDown;
    const std::uint16_t modifiers = event_modifiers(event->modifiers());
    const std::uint32_t character = key_character(*event);
    if (character != 0)
        post_event(what, character, modifiers);
    else if (!control && !(event->modifiers() & Qt::AltModifier) && !event->text().isEmpty())
        post_text(event->text(), what, modifiers);
    else
        event->ignore();
}

void ConsoleView::inputMethodEvent(QInputMethodEvent *event) {
    if (!event->commitString().isEmpty()) {
        clear_selection();
        post_text(event->commitString(), keyDown, 0);
    }
    event->accept();
}

QVariant ConsoleView::inputMethodQuery(Qt::InputMethodQuery query) const {
    if (query == Qt::ImEnabled)
        return caret_shown_;
    return QAbstractScrollArea::inputMethodQuery(query);
}

void ConsoleView::mousePressEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton)
        return;
    const QPoint at = viewport()->mapTo(this, event->position().toPoint());
    post_event(mouseDown, 0, event_modifiers(event->modifiers()),
               {static_cast<std::int16_t>(at.y()), static_cast<std::int16_t>(at.x())});
    const QPoint apart = event->position().toPoint() - pressed_at_;
    const bool third =
        double_clicked_at_ != 0 && apart.manhattanLength() < QApplication::startDragDistance() &&
        event->timestamp() - double_clicked_at_ <
            static_cast<std::uint64_t>(QGuiApplication::styleHints()->mouseDoubleClickInterval());
    double_clicked_at_ = 0;
    press(event, third ? SelectionUnit::line : SelectionUnit::character);
}

void ConsoleView::mouseDoubleClickEvent(QMouseEvent *event) {
    if (!select_text_ || event->button() != Qt::LeftButton) {
        QAbstractScrollArea::mouseDoubleClickEvent(event);
        return;
    }
    double_clicked_at_ = std::max<std::uint64_t>(1, event->timestamp());
    press(event, SelectionUnit::word);
}

// Begins a selection at the mouse; with the Shift key it extends the running one.
void ConsoleView::press(const QMouseEvent *event, SelectionUnit unit) {
    if (!select_text_ || !store_)
        return;
    stale_ = true;
    settle();
    pressed_at_ = drag_at_ = event->position().toPoint();
    const std::size_t at = offset_at_point(pressed_at_, unit == SelectionUnit::character);
    at_row_end_ = false;
    goal_x_ = -1;
    if (!(event->modifiers() & Qt::ShiftModifier) || unit != SelectionUnit::character) {
        selection_.begin(*store_, at, unit);
        unit_ = unit;
    } else {
        if (!selection_.begun())
            selection_.begin(*store_, keyboard_start(), unit);
        selection_.extend(*store_, at);
    }
    dragging_ = true;
    selection_changed();
}

void ConsoleView::drag_to(QPoint point) {
    if (!store_)
        return;
    drag_at_ = point;
    const std::size_t at = offset_at_point(point, unit_ == SelectionUnit::character);
    const ByteRange before = selection();
    selection_.extend(*store_, at);
    if (selection() != before)
        selection_changed();
}

void ConsoleView::mouseMoveEvent(QMouseEvent *event) {
    if (!dragging_ || !(event->buttons() & Qt::LeftButton))
        return;
    drag_to(event->position().toPoint());
    const bool outside = drag_at_.y() < 0 || drag_at_.y() >= viewport()->height();
    if (!outside)
        drag_timer_.stop();
    else if (!drag_timer_.isActive())
        drag_timer_.start(drag_milliseconds, this);
}

// Scrolls while the mouse is dragged past the edge, the faster the farther it is.
void ConsoleView::timerEvent(QTimerEvent *event) {
    if (event->timerId() != drag_timer_.timerId()) {
        QAbstractScrollArea::timerEvent(event);
        return;
    }
    const int above = -drag_at_.y(), below = drag_at_.y() - viewport()->height() + 1;
    const int row = static_cast<int>(metrics_.row_height);
    if (above > 0)
        scroll_rows(-1 - above / row);
    else if (below > 0)
        scroll_rows(1 + below / row);
    drag_to(drag_at_);
}

void ConsoleView::mouseReleaseEvent(QMouseEvent *event) {
    if (!dragging_ || event->button() != Qt::LeftButton)
        return;
    dragging_ = false;
    drag_timer_.stop();
    QClipboard *const clipboard = QGuiApplication::clipboard();
    const ByteRange selected = selection();
    if (!selected.empty() && clipboard->supportsSelection())
        clipboard->setText(text_of(selected), QClipboard::Selection);
}

void ConsoleView::wheelEvent(QWheelEvent *event) {
    event->accept();
    const QPoint pixels = event->pixelDelta();
    if (!pixels.isNull()) {
        wheel_rest_ -= pixels.y();
        const int row = static_cast<int>(metrics_.row_height);
        scroll_rows(wheel_rest_ / row);
        wheel_rest_ %= row;
        return;
    }
    wheel_rest_ -= event->angleDelta().y() * rows_a_notch;
    scroll_rows(wheel_rest_ / wheel_notch);
    wheel_rest_ %= wheel_notch;
}

void ConsoleView::focusInEvent(QFocusEvent *event) {
    keyboard_focus_ = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason ||
                      event->reason() == Qt::MenuBarFocusReason;
    viewport()->update();
}

void ConsoleView::focusOutEvent(QFocusEvent *) {
    keyboard_focus_ = false;
    viewport()->update();
}

} // namespace quillon::desktop
