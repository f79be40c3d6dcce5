// The shell's one window: the menu bar over the console.
#ifndef QUILLON_DESKTOP_MAIN_WINDOW_H
#define QUILLON_DESKTOP_MAIN_WINDOW_H

#include <QMainWindow>

#include "desktop/console_view.h"
#include "desktop/menu_mirror.h"
#include "toolbox/types.h"

namespace quillon::desktop {

class MainWindow : public QMainWindow {
  public:
    // Makes the window with that title, not shown yet.
    explicit MainWindow(const QString &title);

    // The console and the menu bar, which belong to the window.
    ConsoleView *console() { return console_; }
    MenuMirror &menus() { return menus_; }
    // Set and ask the console's rectangle, in global coordinates. It is at least 160 by 80 pixels. On a
    // display that places windows itself, the answer has the place that was asked for.
    void place_content(const Rect &bounds);
    Rect content() const;

  protected:
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;

  private:
    ConsoleView *const console_;
    MenuMirror menus_;
    Rect placed_{};
};

// The window; null until it was made. make_main_window makes it at the first call. It is never freed.
MainWindow *main_window();
MainWindow *make_main_window(const QString &title);

} // namespace quillon::desktop

#endif
