#include "setpaths/window/setup_window.h"

#include <QApplication>
#include <QFile>

#include "desktop/display.h"
#include "desktop/icon.h"
#include "setpaths/window/application_bus.h"
#include "setpaths/window/setup_dialog.h"

namespace setpaths {

extern "C" __attribute__((visibility("default"))) bool quillon_setup_window(const SetupWindowHost &host,
                                                                            int *status) {
    if (!quillon::desktop::display_opens())
        return false;
    static int count = 1;
    static char name[] = "quillon";
    static char *values[] = {name, nullptr};
    QGuiApplication::setDesktopFileName(QStringLiteral("org.quillon.Shell"));
    QApplication::setApplicationName(QStringLiteral("Quillon"));
    const QApplication application(count, values);
    QApplication::setWindowIcon(quillon::desktop::shell_icon());
    SetupDialog dialog(host);
    const ApplicationBus bus(
        QFile::decodeName((host.home + "/setpaths.app").c_str()), [&dialog] { dialog.reject(); },
        [&dialog] {
            dialog.raise();
            dialog.activateWindow();
        });
    dialog.show();
    QApplication::exec();
    *status = dialog.written() ? 0 : 1;
    return true;
}

} // namespace setpaths
