// Event parameters on the bus: a{s(sv)}, keyword -> (type, value).
#ifndef QUILLON_TOOLHOST_WIRE_H
#define QUILLON_TOOLHOST_WIRE_H

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <systemd/sd-bus.h>
#include <vector>

namespace toolhost {

// 'long' is a number; 'TEXT' and 'fss ' are bytes; 'list' has items. Parameters of other types keep their
// type alone.
struct Parameter {
    std::string type;
    std::string bytes;
    std::int32_t number = 0;
    bool is_number = false;
    std::vector<std::string> items;
};
using Parameters = std::map<std::string, Parameter>;

Parameter text_parameter(std::string_view bytes);
Parameter path_parameter(std::string_view bytes);
Parameter number_parameter(std::int32_t number);
// A four-character code as a number.
std::int32_t code_number(std::string_view code);

bool is_utf8(std::string_view bytes);

// Negative errno on failure.
int read_parameters(sd_bus_message *message, Parameters &parameters);
int append_parameters(sd_bus_message *message, const Parameters &parameters);

} // namespace toolhost

#endif
