#include "setpaths/window/setup_window.h"

#include <QApplication>

#include "setpaths/window/application_bus.h"
#include "setpaths/window/setup_dialog.h"
#include "widgets/application.h"
#include "widgets/icon.h"
#include "widgets/start_focus.h"

namespace setpaths {

extern "C" __attribute__((visibility("default"))) bool quillon_setup_window(const SetupWindowHost &host,
                                                                            int *status) {
    if (!widgets::make_window_application(widgets::setup_entry))
        return false;
    QApplication::setWindowIcon(widgets::shell_icon());
    SetupDialog dialog(host);
    const ApplicationBus bus(
        host.home + "/setpaths.app", [] { QApplication::closeAllWindows(); },
        [&dialog] {
            dialog.raise();
            dialog.activateWindow();
        });
    widgets::use_start_token(&dialog);
    dialog.exec();
    *status = dialog.written() ? 0 : 1;
    return true;
}

} // namespace setpaths
