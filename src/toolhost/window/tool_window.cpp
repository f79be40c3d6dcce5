#include "toolhost/window/tool_window.h"

#include <QApplication>
#include <QEventLoop>
#include <QSocketNotifier>
#include <QTimer>

#include "toolhost/window/focus.h"
#include "toolhost/window/run_window.h"
#include "widgets/application.h"

namespace {

constexpr int refresh_milliseconds = 50;

} // namespace

extern "C" __attribute__((visibility("default"))) int quillon_tool_window(const ToolWindowHost *host) {
    if (!widgets::make_window_application(widgets::shell_entry))
        return 0;
    QEventLoop loop;
    toolhost::RunWindow window(*host);
    QTimer timer;
    // While the person works with another program the window stays away until the program waits.
    const auto refresh = [&] {
        if (!window.refresh())
            loop.quit();
        else if (!window.isVisible() && (window.is_asked() || toolhost::person_is_here()))
            window.show();
    };
    QObject::connect(&timer, &QTimer::timeout, refresh);
    QSocketNotifier notifier(host->event_descriptor, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, [&] {
        host->step(host->context);
        ToolWindowState state;
        host->state(host->context, &state);
        if (!state.running)
            loop.quit();
    });
    // Events that the host has read already do not make its descriptor readable.
    host->step(host->context);
    if (!window.refresh())
        return 1;
    timer.start(refresh_milliseconds);
    refresh();
    window.refresh();
    loop.exec();
    window.hide();
    QApplication::processEvents();
    return 1;
}
