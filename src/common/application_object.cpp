#include "common/application_object.h"

#include <string_view>

#include "common/session_bus.h"
#include "common/utf8.h"

namespace common {

namespace {

int get_property(sd_bus *, const char *, const char *, const char *property, sd_bus_message *reply,
                 void *context, sd_bus_error *) {
    const ApplicationObject &object = *static_cast<ApplicationObject *>(context);
    const std::string_view name = property;
    const std::string &text = name == "Signature" ? object.signature
                              : name == "Name"    ? object.name
                                                  : object.path;
    return sd_bus_message_append(reply, "s", is_utf8(text) ? text.c_str() : "");
}

int on_event(sd_bus_message *call, void *context, sd_bus_error *error) {
    return static_cast<ApplicationObject *>(context)->event(call, error);
}

const sd_bus_vtable interface_table[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("Signature", "s", get_property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Name", "s", get_property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Path", "s", get_property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_METHOD("Event", "ssa{s(sv)}", "ia{s(sv)}", on_event, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

} // namespace

int serve_application(sd_bus *bus, ApplicationObject *object) {
    return sd_bus_add_object_vtable(bus, nullptr, application_path, application_interface, interface_table,
                                    object);
}

} // namespace common
