#include "setpaths/window/setup_window.h"

#include <QApplication>
#include <QFile>

#include "desktop/application.h"
#include "desktop/icon.h"
#include "setpaths/window/application_bus.h"
#include "setpaths/window/setup_dialog.h"

namespace setpaths {

extern "C" __attribute__((visibility("default"))) bool quillon_setup_window(const SetupWindowHost &host,
                                                                            int *status) {
    if (!quillon::desktop::make_window_application())
        return false;
    QApplication::setWindowIcon(quillon::desktop::shell_icon());
    SetupDialog dialog(host);
    const ApplicationBus bus(
        QFile::decodeName((host.home + "/setpaths.app").c_str()), [] { QApplication::closeAllWindows(); },
        [&dialog] {
            dialog.raise();
            dialog.activateWindow();
        });
    dialog.exec();
    *status = dialog.written() ? 0 : 1;
    return true;
}

} // namespace setpaths
