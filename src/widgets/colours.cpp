#include "widgets/colours.h"

#include <QApplication>
#include <QEvent>
#include <QPalette>

namespace widgets {

namespace {

constexpr float opacity = 0.65F;

void set_quiet_colour() {
    QColor colour = QApplication::palette().color(QPalette::Text);
    colour.setAlphaF(opacity);
    if (QApplication::palette().color(QPalette::PlaceholderText) == colour)
        return;
    QPalette own; // all other colours stay the desktop's
    own.setColor(QPalette::PlaceholderText, colour);
    QApplication::setPalette(own);
}

class Follower : public QObject {
  public:
    using QObject::QObject;

  protected:
    bool eventFilter(QObject *object, QEvent *event) override {
        if (object == qApp && event->type() == QEvent::ApplicationPaletteChange)
            set_quiet_colour();
        return false;
    }
};

} // namespace

void keep_quiet_texts_readable() {
    set_quiet_colour();
    qApp->installEventFilter(new Follower(qApp));
}

} // namespace widgets
