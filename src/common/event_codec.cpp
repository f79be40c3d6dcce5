#include "common/event_codec.h"

#include "common/session_bus.h"
#include "common/utf8.h"

namespace common {

namespace {

// Lists may hold lists, up to this depth.
constexpr int deepest_list = 8;

Parameter parameter_of(std::string_view keyword, const char *type, ValueKind kind) {
    Parameter parameter;
    parameter.keyword = keyword;
    parameter.type = type;
    parameter.kind = kind;
    return parameter;
}

int read_pair(sd_bus_message *message, Parameter &parameter, int depth);

int read_items(sd_bus_message *message, Parameter &parameter, int depth) {
    int result = sd_bus_message_enter_container(message, 'a', "(sv)");
    while (result >= 0 && (result = sd_bus_message_at_end(message, 0)) == 0) {
        Parameter item;
        result = read_pair(message, item, depth + 1);
        parameter.items.push_back(std::move(item));
    }
    return result < 0 ? result : sd_bus_message_exit_container(message);
}

int read_bytes(sd_bus_message *message, Parameter &parameter) {
    const void *bytes = nullptr;
    std::size_t size = 0;
    const int result = sd_bus_message_read_array(message, 'y', &bytes, &size);
    if (result >= 0)
        parameter.bytes.assign(static_cast<const char *>(bytes), size);
    return result;
}

int read_text(sd_bus_message *message, Parameter &parameter) {
    const char *text = nullptr;
    const int result = sd_bus_message_read_basic(message, 's', &text);
    if (result >= 0)
        parameter.bytes = text;
    return result;
}

int read_value(sd_bus_message *message, Parameter &parameter, int depth) {
    const char *contents = nullptr;
    int result = sd_bus_message_peek_type(message, nullptr, &contents);
    if (result < 0)
        return result;
    const std::string_view signature = contents ? contents : "";
    parameter.kind = signature == "s" || signature == "ay"          ? ValueKind::bytes
                     : signature == "i"                             ? ValueKind::number
                     : signature == "a(sv)" && depth < deepest_list ? ValueKind::list
                                                                    : ValueKind::other;
    if (parameter.kind == ValueKind::other)
        return sd_bus_message_skip(message, "v");
    result = sd_bus_message_enter_container(message, 'v', contents);
    if (result < 0)
        return result;
    if (parameter.kind == ValueKind::number)
        result = sd_bus_message_read_basic(message, 'i', &parameter.number);
    else if (parameter.kind == ValueKind::list)
        result = read_items(message, parameter, depth);
    else
        result = signature == "s" ? read_text(message, parameter) : read_bytes(message, parameter);
    return result < 0 ? result : sd_bus_message_exit_container(message);
}

// Reads one "(sv)": the type and the value.
int read_pair(sd_bus_message *message, Parameter &parameter, int depth) {
    const char *type = nullptr;
    int result = sd_bus_message_enter_container(message, 'r', "sv");
    if (result < 0 || (result = sd_bus_message_read_basic(message, 's', &type)) < 0)
        return result;
    parameter.type = type;
    result = read_value(message, parameter, depth);
    return result < 0 ? result : sd_bus_message_exit_container(message);
}

int append_pair(sd_bus_message *message, const Parameter &parameter);

int append_items(sd_bus_message *message, const std::vector<Parameter> &items) {
    int result = sd_bus_message_open_container(message, 'v', "a(sv)");
    if (result >= 0)
        result = sd_bus_message_open_container(message, 'a', "(sv)");
    for (std::size_t i = 0; result >= 0 && i < items.size(); i++)
        result = append_pair(message, items[i]);
    if (result >= 0)
        result = sd_bus_message_close_container(message);
    return result < 0 ? result : sd_bus_message_close_container(message);
}

int append_value(sd_bus_message *message, const Parameter &parameter) {
    if (parameter.kind == ValueKind::number)
        return sd_bus_message_append(message, "v", "i", parameter.number);
    if (parameter.kind == ValueKind::list)
        return append_items(message, parameter.items);
    if (is_utf8(parameter.bytes))
        return sd_bus_message_append(message, "v", "s", parameter.bytes.c_str());
    int result = sd_bus_message_open_container(message, 'v', "ay");
    if (result >= 0)
        result = sd_bus_message_append_array(message, 'y', parameter.bytes.data(), parameter.bytes.size());
    return result < 0 ? result : sd_bus_message_close_container(message);
}

int append_pair(sd_bus_message *message, const Parameter &parameter) {
    int result = sd_bus_message_open_container(message, 'r', "sv");
    if (result < 0 || (result = sd_bus_message_append(message, "s", parameter.type.c_str())) < 0 ||
        (result = append_value(message, parameter)) < 0)
        return result;
    return sd_bus_message_close_container(message);
}

} // namespace

Parameter text_parameter(std::string_view keyword, std::string_view text) {
    Parameter parameter = parameter_of(keyword, "TEXT", ValueKind::bytes);
    parameter.bytes = text;
    return parameter;
}

Parameter path_parameter(std::string_view keyword, std::string_view path) {
    Parameter parameter = parameter_of(keyword, "fss ", ValueKind::bytes);
    parameter.bytes = path;
    return parameter;
}

Parameter number_parameter(std::string_view keyword, std::int32_t number) {
    Parameter parameter = parameter_of(keyword, "long", ValueKind::number);
    parameter.number = number;
    return parameter;
}

const Parameter *find_parameter(const Parameters &parameters, std::string_view keyword) {
    for (const Parameter &parameter : parameters)
        if (parameter.keyword == keyword)
            return &parameter;
    return nullptr;
}

std::int32_t code_number(std::string_view code) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; i++)
        number = number << 8 | (i < code.size() ? static_cast<unsigned char>(code[i]) : 0U);
    return static_cast<std::int32_t>(number);
}

int read_event(sd_bus_message *message, Event &event) {
    const char *event_class = nullptr, *id = nullptr;
    const int result = sd_bus_message_read(message, "ss", &event_class, &id);
    if (result < 0)
        return result;
    event.event_class = event_class;
    event.id = id;
    return read_parameters(message, event.parameters);
}

int read_parameters(sd_bus_message *message, Parameters &parameters) {
    int result = sd_bus_message_enter_container(message, 'a', "{s(sv)}");
    while (result >= 0 && (result = sd_bus_message_enter_container(message, 'e', "s(sv)")) > 0) {
        const char *keyword = nullptr;
        Parameter parameter;
        if ((result = sd_bus_message_read_basic(message, 's', &keyword)) < 0 ||
            (result = read_pair(message, parameter, 0)) < 0 ||
            (result = sd_bus_message_exit_container(message)) < 0)
            return result;
        parameter.keyword = keyword;
        parameters.push_back(std::move(parameter));
    }
    return result < 0 ? result : sd_bus_message_exit_container(message);
}

int append_parameters(sd_bus_message *message, const Parameters &parameters) {
    int result = sd_bus_message_open_container(message, 'a', "{s(sv)}");
    for (std::size_t i = 0; result >= 0 && i < parameters.size(); i++) {
        result = sd_bus_message_open_container(message, 'e', "s(sv)");
        if (result >= 0)
            result = sd_bus_message_append(message, "s", parameters[i].keyword.c_str());
        if (result >= 0)
            result = append_pair(message, parameters[i]);
        if (result >= 0)
            result = sd_bus_message_close_container(message);
    }
    return result < 0 ? result : sd_bus_message_close_container(message);
}

int new_event_call(sd_bus *bus, const std::string &name, const Event &event, sd_bus_message **call) {
    int result = sd_bus_message_new_method_call(bus, call, name.c_str(), application_path,
                                                application_interface, "Event");
    if (result >= 0)
        result = sd_bus_message_append(*call, "ss", event.event_class.c_str(), event.id.c_str());
    return result < 0 ? result : append_parameters(*call, event.parameters);
}

int answer_event(sd_bus_message *call, std::int32_t error, const Parameters &reply) {
    if (sd_bus_message_get_expect_reply(call) <= 0)
        return 0;
    sd_bus_message *answer = nullptr;
    int result = sd_bus_message_new_method_return(call, &answer);
    if (result >= 0 && (result = sd_bus_message_append_basic(answer, 'i', &error)) >= 0 &&
        (result = append_parameters(answer, reply)) >= 0)
        result = sd_bus_send(sd_bus_message_get_bus(call), answer, nullptr);
    sd_bus_message_unref(answer);
    return result < 0 ? result : 0;
}

} // namespace common
