// Events between programs in the form in which they travel on the bus: a class, an id, and parameters of type
// a{s(sv)}, which lead from a keyword to a type and a value.
#ifndef QUILLON_COMMON_EVENT_CODEC_H
#define QUILLON_COMMON_EVENT_CODEC_H

#include <cstdint>
#include <string>
#include <string_view>
#include <systemd/sd-bus.h>
#include <vector>

namespace common {

enum class ValueKind { other, bytes, number, list };

// One parameter of an event, or one item of a list; an item's keyword is empty. The type says what the value
// means ('TEXT', 'fss ', 'long', 'list', ...). The kind says which member holds it; a value that no member
// can hold has the kind `other`.
struct Parameter {
    std::string keyword;
    std::string type;
    ValueKind kind = ValueKind::other;
    std::string bytes;
    std::int32_t number = 0;
    std::vector<Parameter> items;
};
using Parameters = std::vector<Parameter>;

struct Event {
    std::string event_class, id;
    Parameters parameters;
};

// Each returns a parameter with a copy of what it is given: a 'TEXT' (any bytes), an 'fss ' (PATH is a POSIX
// path), a 'long'.
Parameter text_parameter(std::string_view keyword, std::string_view text);
Parameter path_parameter(std::string_view keyword, std::string_view path);
Parameter number_parameter(std::string_view keyword, std::int32_t number);
// Returns the first parameter with that keyword, null when there is none. It belongs to PARAMETERS.
const Parameter *find_parameter(const Parameters &parameters, std::string_view keyword);
// Returns a four-character code as a number, with the first character in the high byte. Missing characters
// count as 0.
std::int32_t code_number(std::string_view code);

// Read an event, or only its parameters, at the message's place. What is read is added to PARAMETERS. Return
// a negative errno on failure.
int read_event(sd_bus_message *message, Event &event);
int read_parameters(sd_bus_message *message, Parameters &parameters);
// Appends the parameters to the message. A text that is not UTF-8 travels as bytes. Returns a negative errno
// on failure.
int append_parameters(sd_bus_message *message, const Parameters &parameters);

// Makes in CALL a call of the method Event of the application with the bus name NAME. The caller sends and
// releases it. Returns a negative errno on failure.
int new_event_call(sd_bus *bus, const std::string &name, const Event &event, sd_bus_message **call);
// Answers such a call with an error number (0 for none) and the parameters of the reply. A call that wants no
// answer gets none. Returns a negative errno on failure.
int answer_event(sd_bus_message *call, std::int32_t error, const Parameters &reply);

} // namespace common

#endif
