#include "widgets/application.h"

#include <QApplication>

#include "widgets/colours.h"
#include "widgets/display.h"

namespace widgets {

bool make_window_application(const char *desktop_entry) {
    static QApplication *made = nullptr;
    if (made)
        return true;
    if (!display_opens())
        return false;
    static int count = 1;
    static char name[] = "quillon";
    static char *values[] = {name, nullptr};
    QGuiApplication::setDesktopFileName(QString::fromLatin1(desktop_entry));
    QApplication::setApplicationName(QString::fromLatin1(desktop_entry));
    QApplication::setQuitOnLastWindowClosed(false);
    made = new QApplication(count, values);
    keep_quiet_texts_readable();
    return true;
}

} // namespace widgets
