// The bar under the console in which the person finds text.
#ifndef QUILLON_DESKTOP_FIND_BAR_H
#define QUILLON_DESKTOP_FIND_BAR_H

#include <QWidget>
#include <optional>

#include "desktop/console_search.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QToolButton;

namespace quillon::desktop {

class ConsoleView;

class FindBar : public QWidget {
  public:
    // Makes the hidden bar of CONSOLE, which must last longer than the bar; PARENT owns it.
    FindBar(ConsoleView *console, QWidget *parent);

    // Shows the bar with the keyboard in it; a short text that is selected in the console is looked for.
    void open();
    // Hides the bar and gives the console the keyboard.
    void shut();
    // Go to the hit after the marked one and to that before; after the last comes the first.
    void find_next();
    void find_previous();
    // Brings the count of hits in line with the console's text.
    void refresh();
    // The count as it is shown.
    QString count() const;

  protected:
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    bool eventFilter(QObject *object, QEvent *event) override;

  private:
    QToolButton *make_button(const QString &name);
    void lay_out();
    void search_anew();
    void go_to(std::optional<ByteRange> hit);
    QString count_text() const;
    bool passes_on(const QKeyEvent *event) const;

    ConsoleView *const console_;
    QLineEdit *const text_;
    QToolButton *const previous_, *const next_;
    QCheckBox *const match_case_;
    QLabel *const count_;
    QToolButton *const close_;
    ConsoleSearch search_;
    const TextStore *store_ = nullptr; // in which the hits are counted
    std::size_t origin_ = 0;           // where the search begins while the text is typed
};

} // namespace quillon::desktop

#endif
