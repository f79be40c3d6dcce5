// The set-up as an application on the bus, as every program that the shell launches is.
#ifndef QUILLON_SETPATHS_WINDOW_APPLICATION_BUS_H
#define QUILLON_SETPATHS_WINDOW_APPLICATION_BUS_H

#include <QDBusVirtualObject>
#include <functional>

namespace setpaths {

class ApplicationBus : public QDBusVirtualObject {
  public:
    // BUNDLE is the POSIX path of the bundle. QUIT is called for a quit event, SHOW for one that opens the
    // application; both after it was answered.
    ApplicationBus(const QString &bundle, std::function<void()> quit, std::function<void()> show);

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

  private:
    QDBusMessage answer_event(const QDBusMessage &message);
    QDBusMessage answer_property(const QDBusMessage &message) const;

    QVariantMap properties_;
    std::function<void()> quit_, show_;
};

} // namespace setpaths

#endif
