#include "setpaths/window/application_bus.h"

#include <QTimer>
#include <unistd.h>

#include "common/event_codec.h"
#include "common/session_bus.h"
#include "toolbox/types.h"

namespace setpaths {

ApplicationBus::ApplicationBus(const std::string &bundle, std::function<void()> quit,
                               std::function<void()> show)
    : object_{"SETP", "setpaths", bundle,
              [this](sd_bus_message *call, sd_bus_error *) { return take_event(call); }},
      quit_(std::move(quit)), show_(std::move(show)), bus_(common::open_session_bus()) {
    if (!bus_ || common::serve_application(bus_, &object_) < 0 ||
        sd_bus_request_name(bus_, common::application_bus_name(getpid()).c_str(), 0) < 0)
        return;
    notifier_ = std::make_unique<QSocketNotifier>(sd_bus_get_fd(bus_), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this] { serve(); });
    // Calls may have been read together with the answer to the request.
    QTimer::singleShot(0, notifier_.get(), [this] { serve(); });
}

ApplicationBus::~ApplicationBus() {
    notifier_.reset();
    sd_bus_flush_close_unref(bus_);
}

void ApplicationBus::serve() {
    int result;
    while ((result = sd_bus_process(bus_, nullptr)) > 0) {
    }
    sd_bus_flush(bus_);
    // The descriptor of a bus that has gone stays readable for ever.
    if (result < 0)
        notifier_->setEnabled(false);
}

int ApplicationBus::take_event(sd_bus_message *call) {
    common::Event event;
    int result = common::read_event(call, event);
    if (result < 0)
        return result;
    const bool quits = event.event_class == "aevt" && event.id == "quit";
    const bool shows = event.event_class == "aevt" && (event.id == "oapp" || event.id == "rapp");
    result = common::answer_event(call, quits || shows ? quillon::noErr : quillon::errAEEventNotHandled, {});
    if (quits || shows)
        QTimer::singleShot(0, quits ? quit_ : show_);
    return result < 0 ? result : 1;
}

} // namespace setpaths
