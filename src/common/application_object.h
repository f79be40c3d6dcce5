// The object that every application serves on the bus: who it is, and the events that it takes.
#ifndef QUILLON_COMMON_APPLICATION_OBJECT_H
#define QUILLON_COMMON_APPLICATION_OBJECT_H

#include <functional>
#include <string>
#include <systemd/sd-bus.h>

namespace common {

struct ApplicationObject {
    std::string signature; // four characters
    std::string name;
    std::string path; // POSIX path of its bundle or program
    // Called for each call of the method Event, with the call unread. It answers the call, now or later, and
    // returns as a method handler of the bus library does.
    std::function<int(sd_bus_message *call, sd_bus_error *error)> event;
};

// Serves OBJECT, which must outlive BUS, as /org/quillon/App. The application's name is the caller's to
// request (application_bus_name). Negative errno on failure.
int serve_application(sd_bus *bus, ApplicationObject *object);

} // namespace common

#endif
