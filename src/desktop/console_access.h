// The console for screen readers and other assistive technology.
#ifndef QUILLON_DESKTOP_CONSOLE_ACCESS_H
#define QUILLON_DESKTOP_CONSOLE_ACCESS_H

#include <QAccessibleWidget>

#include "desktop/spoken_text.h"

namespace quillon::desktop {

class ConsoleView;

class ConsoleAccess : public QAccessibleWidget, public QAccessibleTextInterface {
  public:
    explicit ConsoleAccess(ConsoleView *view);

    // Brings the text up to date and says what changed.
    void refresh() const;

    QAccessible::State state() const override;
    void *interface_cast(QAccessible::InterfaceType type) override;

    void selection(int index, int *start, int *end) const override;
    int selectionCount() const override { return 0; }
    void addSelection(int, int) override {}
    void removeSelection(int) override {}
    void setSelection(int, int, int) override {}
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

    ConsoleView *const view_;
    mutable SpokenText spoken_;
};

// Makes the view's interface known to the toolkit; made only when something asks for it.
void offer_console_access();
// Called when the text or what is seen of it changed; costs nothing while nobody listens.
void tell_assistive_technology(ConsoleView *view);

} // namespace quillon::desktop

#endif
