// Events between programs as they travel on the bus: a class, an id, and parameters a{s(sv)}, keyword ->
// (type, value).
#ifndef QUILLON_COMMON_EVENT_CODEC_H
#define QUILLON_COMMON_EVENT_CODEC_H

#include <cstdint>
#include <string>
#include <string_view>
#include <systemd/sd-bus.h>
#include <vector>

namespace common {

enum class ValueKind { other, bytes, number, list };

// One parameter, or one item of a list (then KEYWORD is empty). The type says what the value means ('TEXT',
// 'fss ', 'long', 'list', ...), the kind which member holds it; a value that no member can hold is of kind
// `other`.
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

Parameter text_parameter(std::string_view keyword, std::string_view text);
// PATH is a POSIX path.
Parameter path_parameter(std::string_view keyword, std::string_view path);
Parameter number_parameter(std::string_view keyword, std::int32_t number);
// The first parameter of that keyword; null when there is none.
const Parameter *find_parameter(const Parameters &parameters, std::string_view keyword);
// A four-character code as a number, the first character in the high byte; missing characters count as 0.
std::int32_t code_number(std::string_view code);

// Each reads or appends at the message's place and answers a negative errno on failure.
int read_event(sd_bus_message *message, Event &event);
int append_event(sd_bus_message *message, const Event &event);
int read_parameters(sd_bus_message *message, Parameters &parameters);
int append_parameters(sd_bus_message *message, const Parameters &parameters);

// A call of the method Event of the application NAME, which the caller sends and drops. Negative errno on
// failure.
int new_event_call(sd_bus *bus, const std::string &name, const Event &event, sd_bus_message **call);
// Answers such a call with an error number and a reply's parameters, where an answer is wanted. Negative
// errno on failure.
int answer_event(sd_bus_message *call, std::int32_t error, const Parameters &reply);

} // namespace common

#endif
