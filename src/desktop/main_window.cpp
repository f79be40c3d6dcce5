#include "desktop/main_window.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QMenuBar>
#include <algorithm>
#include <limits>

#include "desktop/event_pump.h"

namespace quillon::desktop {

namespace {

constexpr int smallest_width = 160, smallest_height = 80;

MainWindow *the_window = nullptr;

std::int16_t coordinate(int value) {
    using Limits = std::numeric_limits<std::int16_t>;
    return static_cast<std::int16_t>(std::clamp<int>(value, Limits::min(), Limits::max()));
}

// True for a display that places the windows and does not tell them where.
bool places_windows_itself() {
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

} // namespace

MainWindow::MainWindow(const QString &title) : console_(new ConsoleView(this)), menus_(menuBar()) {
    setWindowTitle(title);
    setCentralWidget(console_);
    setContextMenuPolicy(Qt::NoContextMenu);
    console_->setMinimumSize(smallest_width, smallest_height);
    console_->setFocus();
}

void MainWindow::place_content(const Rect &bounds) {
    placed_ = bounds;
    const int bar = menuBar()->minimumHeight();
    const int width = std::max(smallest_width, bounds.right - bounds.left);
    const int height = std::max(smallest_height, bounds.bottom - bounds.top);
    setGeometry(bounds.left, bounds.top - bar, width, height + bar);
}

Rect MainWindow::content() const {
    const QPoint at = console_->mapToGlobal(QPoint(0, 0));
    const bool keeps = places_windows_itself();
    const int left = keeps ? placed_.left : at.x(), top = keeps ? placed_.top : at.y();
    return {coordinate(top), coordinate(left), coordinate(top + console_->height()),
            coordinate(left + console_->width())};
}

// Asks the shell to end instead of closing the window, so that it can end its run and save first.
void MainWindow::closeEvent(QCloseEvent *event) {
    event->ignore();
    post_leave();
}

void MainWindow::changeEvent(QEvent *event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange)
        post_event(activateEvt, 0, isActiveWindow() ? activeFlag : 0);
}

MainWindow *main_window() {
    return the_window;
}

MainWindow *make_main_window(const QString &title) {
    if (!the_window)
        the_window = new MainWindow(title);
    return the_window;
}

} // namespace quillon::desktop
