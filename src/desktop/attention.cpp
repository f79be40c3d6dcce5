#include "desktop/attention.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QElapsedTimer>
#include <QTimer>
#include <QVariantMap>

#include "desktop/event_pump.h"
#include "desktop/main_window.h"
#include "state/job_state.h"
#include "tools/problems.h"

namespace quillon::desktop {

namespace {

// People do something else during a run of at least this many milliseconds; a moment after its end the tool's
// own window has gone.
constexpr int long_run = 10000, moment = 500;

std::uint32_t notification = 0; // 0: none is shown
bool wanted = false;
QElapsedTimer run_time;

QDBusMessage notification_call(const char *method) {
    return QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QString::fromLatin1(method));
}

void take_back() {
    if (notification == 0)
        return;
    QDBusMessage call = notification_call("CloseNotification");
    call.setArguments({notification});
    QDBusConnection::sessionBus().asyncCall(call);
    notification = 0;
}

void show_notification(const QString &text) {
    QDBusMessage call = notification_call("Notify");
    const QString title = main_window() ? main_window()->windowTitle() : QStringLiteral("Quillon");
    call.setArguments({title, notification, QStringLiteral("org.quillon.Shell"), title, text, QStringList(),
                       QVariantMap{{QStringLiteral("desktop-entry"), QStringLiteral("org.quillon.Shell")}},
                       -1});
    auto *const watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher] {
        const QDBusPendingReply<std::uint32_t> reply = *watcher;
        if (reply.isValid())
            notification = reply.value();
        watcher->deleteLater();
        if (!wanted)
            take_back();
    });
}

// The line that sums the run up, below what else is said; empty when its tool reported nothing.
QString summary_below() {
    BoundedString<256> line;
    command_summary(line);
    return line.empty() ? QString() : u'\n' + QString::fromUtf8(line.c_str());
}

void ask_for_attention(const QString &text) {
    wanted = true;
    if (main_window())
        QApplication::alert(main_window());
    if (QDBusConnection::sessionBus().isConnected())
        show_notification(text);
}

} // namespace

void notify(int on) {
    wanted = on != 0;
    if (!wanted) {
        take_back();
        return;
    }
    ask_for_attention(QObject::tr("Quillon needs your attention."));
}

void run_begins() {
    run_time.start();
}

void run_ends() {
    if (!run_time.isValid() || run_time.elapsed() < long_run)
        return;
    QTimer::singleShot(moment, qApp, [] {
        if (QGuiApplication::applicationState() != Qt::ApplicationActive && !wanted)
            ask_for_attention((exit_status == 0 ? QObject::tr("The run is done.")
                                                : QObject::tr("The run has ended with an error.")) +
                              summary_below());
    });
}

void bring_to_front(const char *token) {
    MainWindow *const window = main_window();
    if (!window)
        return;
    // The toolkit reads the token from the environment and gives it to the compositor with its request.
    if (token && *token)
        qputenv("XDG_ACTIVATION_TOKEN", token);
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->show();
    window->raise();
    window->activateWindow();
    // A toolkit that found no use for it would hand it on to what the shell starts.
    qunsetenv("XDG_ACTIVATION_TOKEN");
}

void watch_activation() {
    QObject::connect(qApp, &QGuiApplication::applicationStateChanged, qApp, [](Qt::ApplicationState state) {
        if (state == Qt::ApplicationActive) {
            notify(0);
            post_event(osEvt, suspendResumeMessage | resumeFlag, 0);
        } else {
            post_event(osEvt, suspendResumeMessage, 0);
        }
    });
}

} // namespace quillon::desktop
