// The shell's one window: the menu bar over the console, and under that a line that sums the last run up and
// the bar that finds text in the console.
#ifndef QUILLON_DESKTOP_MAIN_WINDOW_H
#define QUILLON_DESKTOP_MAIN_WINDOW_H

#include <QMainWindow>
#include <QTimer>

#include "desktop/console_view.h"
#include "desktop/find_bar.h"
#include "desktop/menu_mirror.h"
#include "toolbox/types.h"

class QLabel;

namespace quillon::desktop {

class MainWindow : public QMainWindow {
  public:
    // Makes the window with that title, not shown yet.
    explicit MainWindow(const QString &title);

    // The console and the menu bar, which belong to the window.
    ConsoleView *console() { return console_; }
    MenuMirror &menus() { return menus_; }
    // The bar that finds text; it belongs to the window.
    FindBar *find_bar();
    // True while the keyboard is in that bar.
    bool finds() const;
    // Set and ask the rectangle of the console with the bar, in global coordinates. It is at least 160 by 80
    // pixels. On a display that places windows itself, the answer has the place that was asked for.
    void place_content(const Rect &bounds);
    Rect content() const;

    // Says (true) that a run is going on, or no longer.
    void set_busy(bool busy);
    // Shows LINE, which sums the last run up, below the console.
    void set_summary(const QString &line);

  protected:
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;

  private:
    void make_zoom_keys();

    QWidget *const content_;
    ConsoleView *const console_;
    FindBar *find_bar_ = nullptr; // made when text is first looked for
    QLabel *busy_ = nullptr;      // made when the first run begins
    QLabel *summary_ = nullptr;   // made when the first run has ended
    QTimer busy_delay_;
    MenuMirror menus_;
    Rect placed_{};
};

// The window; null until it was made. make_main_window makes it at the first call. It is never freed.
MainWindow *main_window();
MainWindow *make_main_window(const QString &title);

} // namespace quillon::desktop

#endif
