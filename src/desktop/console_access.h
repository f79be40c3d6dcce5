// Offers the console's text to screen readers and other assistive technology.
#ifndef QUILLON_DESKTOP_CONSOLE_ACCESS_H
#define QUILLON_DESKTOP_CONSOLE_ACCESS_H

#include <QAccessibleWidget>

#include "desktop/console_selection.h"
#include "desktop/spoken_text.h"

namespace quillon::desktop {

class ConsoleView;

// The console's accessible interface. Offsets are characters (UTF-16) of its text, which is the part of the
// console's text that SpokenText keeps; the text cannot be changed. A selection that begins or ends outside
// of that part counts as far as it lies within.
class ConsoleAccess : public QAccessibleWidget, public QAccessibleTextInterface {
  public:
    // VIEW must last longer than this interface.
    explicit ConsoleAccess(ConsoleView *view);

    // Brings the text and the selection up to date and tells listeners what changed.
    void refresh() const;

    // The procedures of the toolkit's interface. The caret stands at the end of the text. A rectangle is in
    // global coordinates and empty for text above the view; offsetAtPoint gives -1 where there is no text.
    QAccessible::State state() const override;
    void *interface_cast(QAccessible::InterfaceType type) override;
    void selection(int index, int *start, int *end) const override;
    int selectionCount() const override;
    void addSelection(int start, int end) override;
    void removeSelection(int index) override;
    void setSelection(int index, int start, int end) override;
    int cursorPosition() const override;
    void setCursorPosition(int) override {}
    QString text(QAccessible::Text kind) const override;
    QString text(int start, int end) const override;
    int characterCount() const override;
    QRect characterRect(int offset) const override;
    int offsetAtPoint(const QPoint &point) const override;
    void scrollToSubstring(int start, int end) override;
    QString attributes(int offset, int *start, int *end) const override;

  private:
    const SpokenText &spoken() const;
    int offset_of(std::size_t byte) const;
    std::size_t byte_of(int offset) const;
    void tell_selection() const;

    ConsoleView *const view_;
    mutable SpokenText spoken_;
    mutable ByteRange told_; // the selection that listeners know
    mutable bool was_empty_ = true;
};

// Tells the toolkit how to make the interface of a console view, which it does when a listener asks for it.
void offer_console_access();
// Tells listeners that the text of the view, or the part that is seen, changed. It costs next to nothing
// while there is no listener.
void tell_assistive_technology(ConsoleView *view);

} // namespace quillon::desktop

#endif
