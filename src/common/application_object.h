// The object that every application serves on the bus. It says who the application is and takes its events.
#ifndef QUILLON_COMMON_APPLICATION_OBJECT_H
#define QUILLON_COMMON_APPLICATION_OBJECT_H

#include <functional>
#include <string>
#include <systemd/sd-bus.h>

namespace common {

struct ApplicationObject {
    std::string signature; // four characters
    std::string name;      // as a person knows it
    std::string path;      // POSIX path of its bundle or program
    // Each call of the method Event comes here with none of its parameters read. The handler answers the
    // call, now or later, and returns as a method handler of the bus library does.
    std::function<int(sd_bus_message *call, sd_bus_error *error)> event;
};

// Serves OBJECT, which must outlive BUS, as /org/quillon/App. The caller requests the bus name itself
// (application_bus_name). Returns a negative errno on failure.
int serve_application(sd_bus *bus, ApplicationObject *object);

} // namespace common

#endif
