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
    explicit MainWindow(const QString &title);

    ConsoleView *console() { return console_; }
    MenuMirror &menus() { return menus_; }
    // The console's rectangle, in global coordinates.
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

// Null until it is made.
MainWindow *main_window();
MainWindow *make_main_window(const QString &title);

} // namespace quillon::desktop

#endif
