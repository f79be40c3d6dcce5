#include "desktop/attention.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>

#include "desktop/event_pump.h"
#include "desktop/main_window.h"

namespace quillon::desktop {

namespace {

std::uint32_t notification = 0; // 0: none is shown
bool wanted = false;

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

void show_notification() {
    QDBusMessage call = notification_call("Notify");
    const QString title = main_window() ? main_window()->windowTitle() : QStringLiteral("Quillon");
    call.setArguments({title, notification, QStringLiteral("org.quillon.Shell"), title,
                       QObject::tr("Quillon needs your attention."), QStringList(),
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

} // namespace

void notify(int on) {
    wanted = on != 0;
    if (!wanted) {
        take_back();
        return;
    }
    if (main_window())
        QApplication::alert(main_window());
    if (QDBusConnection::sessionBus().isConnected())
        show_notification();
}

void bring_to_front(const char *token) {
    MainWindow *const window = main_window();
    if (!window)
        return;
    // The toolkit hands the token on to a Wayland compositor with the request.
    if (token && *token)
        qputenv("XDG_ACTIVATION_TOKEN", token);
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->show();
    window->raise();
    window->activateWindow();
}

void watch_activation() {
    QObject::connect(qApp, &QGuiApplication::applicationStateChanged, qApp, [](Qt::ApplicationState state) {
        if (state == Qt::ApplicationActive)
            post_event(osEvt, suspendResumeMessage | resumeFlag, 0);
        else
            post_event(osEvt, suspendResumeMessage, 0);
    });
}

} // namespace quillon::desktop
