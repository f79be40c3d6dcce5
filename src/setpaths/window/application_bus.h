// Serves the set-up as an application on the session bus, which every program that the shell launches does.
#ifndef QUILLON_SETPATHS_WINDOW_APPLICATION_BUS_H
#define QUILLON_SETPATHS_WINDOW_APPLICATION_BUS_H

#include <QSocketNotifier>
#include <functional>
#include <memory>
#include <string>
#include <systemd/sd-bus.h>

#include "common/application_object.h"

namespace setpaths {

class ApplicationBus {
  public:
    // BUNDLE is the POSIX path of the set-up's bundle. After a quit event was answered QUIT is called, after
    // an event that opens the application SHOW. Without a session bus nothing is served.
    ApplicationBus(const std::string &bundle, std::function<void()> quit, std::function<void()> show);
    ~ApplicationBus();
    ApplicationBus(const ApplicationBus &) = delete;
    ApplicationBus &operator=(const ApplicationBus &) = delete;

  private:
    int take_event(sd_bus_message *call);
    void serve();

    common::ApplicationObject object_;
    std::function<void()> quit_, show_;
    sd_bus *bus_ = nullptr;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace setpaths

#endif
