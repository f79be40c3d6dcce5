#include "widgets/start_focus.h"

#include <QEvent>
#include <QGuiApplication>
#include <QTimer>
#include <QWidget>

namespace widgets {

namespace {

class FirstPaint : public QObject {
  public:
    explicit FirstPaint(QWidget *window) : QObject(window), window_(window) {
        window->installEventFilter(this);
    }

  protected:
    bool eventFilter(QObject *, QEvent *event) override {
        if (event->type() != QEvent::Paint)
            return false;
        window_->removeEventFilter(this);
        // The toolkit takes the token from the environment.
        QTimer::singleShot(0, window_, [window = window_] { window->activateWindow(); });
        deleteLater();
        return false;
    }

  private:
    QWidget *window_;
};

} // namespace

void use_start_token(QWidget *window) {
    if (!qEnvironmentVariableIsEmpty("XDG_ACTIVATION_TOKEN") &&
        QGuiApplication::platformName().startsWith(QLatin1String("wayland")))
        new FirstPaint(window);
}

} // namespace widgets
