// The console's keys, clicks and wheel. Keys and clicks become events for the shell; the rest scrolls.
#include <QFocusEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QWheelEvent>

#include "desktop/console_view.h"
#include "desktop/event_pump.h"

namespace quillon::desktop {

namespace {

constexpr std::uint32_t key_return = 13, key_backspace = 8, key_tab = 9, key_escape = 27, key_delete = 127;
constexpr int wheel_notch = 120, rows_a_notch = 3;

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

} // namespace

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
    if (scroll_by_key(event))
        return;
    const bool control = event->modifiers() & Qt::ControlModifier;
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
    if (!event->commitString().isEmpty())
        post_text(event->commitString(), keyDown, 0);
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
