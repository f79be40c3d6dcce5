#include "desktop/main_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QMenuBar>
#include <QShortcut>
#include <QVBoxLayout>
#include <algorithm>
#include <limits>

#include "desktop/event_pump.h"

namespace quillon::desktop {

namespace {

constexpr int smallest_width = 160, smallest_height = 80;
constexpr int summary_edge = 6;
constexpr int busy_moment = 400; // milliseconds; a shorter run is not marked

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

MainWindow::MainWindow(const QString &title)
    : content_(new QWidget(this)), console_(new ConsoleView(content_)), menus_(menuBar()) {
    setWindowTitle(title);
    auto *const column = new QVBoxLayout(content_);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(console_, 1);
    setCentralWidget(content_);
    make_zoom_keys();
    setContextMenuPolicy(Qt::NoContextMenu);
    console_->setMinimumSize(smallest_width, smallest_height);
    console_->setFocus();
}

// Marks a run that lasts a moment in the corner of the menu bar.
void MainWindow::set_busy(bool busy) {
    if (!busy_) {
        busy_ = new QLabel(tr("Running…  "), menuBar());
        busy_->setForegroundRole(QPalette::PlaceholderText);
        busy_->hide();
        menuBar()->setCornerWidget(busy_);
        busy_delay_.setSingleShot(true);
        busy_delay_.setInterval(busy_moment);
        connect(&busy_delay_, &QTimer::timeout, busy_, [this] {
            // While the run still asks for its file nothing runs.
            if (QApplication::activeModalWidget())
                busy_delay_.start();
            else
                busy_->show();
        });
    }
    if (busy) {
        busy_delay_.start();
        return;
    }
    busy_delay_.stop();
    busy_->hide();
}

void MainWindow::set_summary(const QString &line) {
    if (!summary_) {
        summary_ = new QLabel(content_);
        summary_->setForegroundRole(QPalette::PlaceholderText);
        summary_->setContentsMargins(summary_edge, 1, summary_edge, 1);
        // The line never makes the window wider.
        summary_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
        static_cast<QVBoxLayout *>(content_->layout())->insertWidget(1, summary_);
    }
    summary_->setText(line);
    summary_->setToolTip(line);
    summary_->setAccessibleName(tr("Last run: %1").arg(line));
}

// The keys that size the text are the window's own, so they work while no command can be chosen too.
void MainWindow::make_zoom_keys() {
    const auto add = [this](Qt::Key key, int steps) {
        connect(new QShortcut(Qt::CTRL | key, this), &QShortcut::activated, console_,
                [this, steps] { console_->zoom(steps); });
    };
    add(Qt::Key_Plus, 1);
    add(Qt::Key_Equal, 1); // the key of the plus sign without Shift
    add(Qt::Key_Minus, -1);
    add(Qt::Key_0, 0);
}

FindBar *MainWindow::find_bar() {
    if (!find_bar_) {
        find_bar_ = new FindBar(console_, content_);
        content_->layout()->addWidget(find_bar_);
    }
    return find_bar_;
}

bool MainWindow::finds() const {
    const QWidget *const focus = focusWidget();
    return find_bar_ && find_bar_->isVisible() && focus && find_bar_->isAncestorOf(focus);
}

void MainWindow::place_content(const Rect &bounds) {
    placed_ = bounds;
    const int bar = menuBar()->minimumHeight();
    const int width = std::max(smallest_width, bounds.right - bounds.left);
    const int height = std::max(smallest_height, bounds.bottom - bounds.top);
    setGeometry(bounds.left, bounds.top - bar, width, height + bar);
}

Rect MainWindow::content() const {
    const QPoint at = content_->mapToGlobal(QPoint(0, 0));
    const bool keeps = places_windows_itself();
    const int left = keeps ? placed_.left : at.x(), top = keeps ? placed_.top : at.y();
    return {coordinate(top), coordinate(left), coordinate(top + content_->height()),
            coordinate(left + content_->width())};
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
