#include "setpaths/window/application_bus.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QTimer>

namespace setpaths {

namespace {

constexpr int not_handled = -1708;

const QString &application_interface() {
    static const QString name = QStringLiteral("org.quillon.App1");
    return name;
}

// A reply's parameters, a{s(sv)}, of which this application has none.
struct Parameter {
    QString type;
    QDBusVariant value;
};
using Parameters = QMap<QString, Parameter>;

QDBusArgument &operator<<(QDBusArgument &argument, const Parameter &parameter) {
    argument.beginStructure();
    argument << parameter.type << parameter.value;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Parameter &parameter) {
    argument.beginStructure();
    argument >> parameter.type >> parameter.value;
    argument.endStructure();
    return argument;
}

} // namespace

ApplicationBus::ApplicationBus(const QString &bundle, std::function<void()> quit, std::function<void()> show)
    : properties_{{QStringLiteral("Signature"), QStringLiteral("SETP")},
                  {QStringLiteral("Name"), QStringLiteral("setpaths")},
                  {QStringLiteral("Path"), bundle}},
      quit_(std::move(quit)), show_(std::move(show)) {
    qDBusRegisterMetaType<Parameter>();
    qDBusRegisterMetaType<Parameters>();
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected() && bus.registerVirtualObject(QStringLiteral("/org/quillon/App"), this))
        bus.registerService(QStringLiteral("org.quillon.App.p%1").arg(QCoreApplication::applicationPid()));
}

QString ApplicationBus::introspect(const QString &) const {
    return QStringLiteral(
        "<interface name=\"org.quillon.App1\">"
        "<property name=\"Signature\" type=\"s\" access=\"read\"/>"
        "<property name=\"Name\" type=\"s\" access=\"read\"/>"
        "<property name=\"Path\" type=\"s\" access=\"read\"/>"
        "<method name=\"Event\"><arg type=\"s\" direction=\"in\"/><arg type=\"s\" direction=\"in\"/>"
        "<arg type=\"a{s(sv)}\" direction=\"in\"/><arg type=\"i\" direction=\"out\"/>"
        "<arg type=\"a{s(sv)}\" direction=\"out\"/></method></interface>");
}

QDBusMessage ApplicationBus::answer_event(const QDBusMessage &message) {
    const QString event_class = message.arguments().value(0).toString();
    const QString id = message.arguments().value(1).toString();
    int result = not_handled;
    if (event_class == QLatin1String("aevt") && id == QLatin1String("quit")) {
        result = 0;
        QTimer::singleShot(0, quit_);
    } else if (event_class == QLatin1String("aevt") &&
               (id == QLatin1String("oapp") || id == QLatin1String("rapp"))) {
        result = 0;
        QTimer::singleShot(0, show_);
    }
    return message.createReply({result, QVariant::fromValue(Parameters())});
}

QDBusMessage ApplicationBus::answer_property(const QDBusMessage &message) const {
    const QString asked = message.arguments().value(1).toString();
    if (message.arguments().value(0).toString() != application_interface())
        return message.createErrorReply(QDBusError::UnknownInterface, asked);
    if (message.member() == QLatin1String("GetAll"))
        return message.createReply(QVariant(properties_));
    if (message.member() == QLatin1String("Get") && properties_.contains(asked))
        return message.createReply(QVariant::fromValue(QDBusVariant(properties_.value(asked))));
    return message.createErrorReply(QDBusError::UnknownProperty, asked);
}

bool ApplicationBus::handleMessage(const QDBusMessage &message, const QDBusConnection &connection) {
    if (message.interface() == QLatin1String("org.freedesktop.DBus.Properties"))
        return connection.send(answer_property(message));
    if (message.member() != QLatin1String("Event") || message.signature() != QLatin1String("ssa{s(sv)}"))
        return false;
    const QDBusMessage answer = answer_event(message);
    return !message.isReplyRequired() || connection.send(answer);
}

} // namespace setpaths
