#include "wire.h"

#include <cerrno>
#include <cstring>

namespace toolhost {

Parameter text_parameter(std::string_view bytes) {
    Parameter parameter;
    parameter.type = "TEXT";
    parameter.bytes = bytes;
    return parameter;
}

Parameter path_parameter(std::string_view bytes) {
    Parameter parameter = text_parameter(bytes);
    parameter.type = "fss ";
    return parameter;
}

Parameter number_parameter(std::int32_t number) {
    Parameter parameter;
    parameter.type = "long";
    parameter.number = number;
    parameter.is_number = true;
    return parameter;
}

std::int32_t code_number(std::string_view code) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; i++)
        number = number << 8 | (i < code.size() ? static_cast<unsigned char>(code[i]) : 0U);
    return static_cast<std::int32_t>(number);
}

// As the bus takes a string: well-formed, no NUL, no surrogates.
bool is_utf8(std::string_view bytes) {
    for (std::size_t i = 0; i < bytes.size();) {
        const auto lead = static_cast<unsigned char>(bytes[i]);
        std::size_t more;
        std::uint32_t code;
        if (lead < 0x80) {
            if (lead == 0)
                return false;
            i++;
            continue;
        }
        if (lead >= 0xC2 && lead <= 0xDF) {
            more = 1;
            code = lead & 0x1FU;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            more = 2;
            code = lead & 0x0FU;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            more = 3;
            code = lead & 0x07U;
        } else {
            return false;
        }
        if (i + more >= bytes.size())
            return false;
        for (std::size_t k = 1; k <= more; k++) {
            const auto next = static_cast<unsigned char>(bytes[i + k]);
            if ((next & 0xC0U) != 0x80)
                return false;
            code = code << 6 | (next & 0x3FU);
        }
        if ((more == 2 && code < 0x800) || (more == 3 && code < 0x10000) || code > 0x10FFFF ||
            (code >= 0xD800 && code <= 0xDFFF))
            return false;
        i += more + 1;
    }
    return true;
}

namespace {

int read_value(sd_bus_message *message, Parameter &parameter);

int read_items(sd_bus_message *message, Parameter &parameter) {
    int result = sd_bus_message_enter_container(message, 'a', "(sv)");
    while (result >= 0 && (result = sd_bus_message_enter_container(message, 'r', "sv")) > 0) {
        const char *type = nullptr;
        Parameter item;
        if ((result = sd_bus_message_read_basic(message, 's', &type)) < 0 ||
            (result = read_value(message, item)) < 0 || (result = sd_bus_message_exit_container(message)) < 0)
            return result;
        if (!item.is_number && item.items.empty())
            parameter.items.push_back(item.bytes);
    }
    return result < 0 ? result : sd_bus_message_exit_container(message);
}

int read_value(sd_bus_message *message, Parameter &parameter) {
    char type = 0;
    const char *contents = nullptr;
    int result = sd_bus_message_peek_type(message, &type, &contents);
    if (result < 0)
        return result;
    const std::string_view signature = contents ? contents : "";
    if (signature != "s" && signature != "o" && signature != "ay" && signature != "i" && signature != "a(sv)")
        return sd_bus_message_skip(message, "v");
    result = sd_bus_message_enter_container(message, 'v', contents);
    if (result < 0)
        return result;
    if (signature == "i") {
        parameter.is_number = true;
        result = sd_bus_message_read_basic(message, 'i', &parameter.number);
    } else if (signature == "a(sv)") {
        result = read_items(message, parameter);
    } else if (signature == "ay") {
        const void *bytes = nullptr;
        std::size_t size = 0;
        result = sd_bus_message_read_array(message, 'y', &bytes, &size);
        if (result >= 0)
            parameter.bytes.assign(static_cast<const char *>(bytes), size);
    } else {
        const char *text = nullptr;
        result = sd_bus_message_read_basic(message, signature[0], &text);
        if (result >= 0)
            parameter.bytes = text;
    }
    return result < 0 ? result : sd_bus_message_exit_container(message);
}

} // namespace

int read_parameters(sd_bus_message *message, Parameters &parameters) {
    int result = sd_bus_message_enter_container(message, 'a', "{s(sv)}");
    while (result >= 0 && (result = sd_bus_message_enter_container(message, 'e', "s(sv)")) > 0) {
        const char *keyword = nullptr;
        const char *type = nullptr;
        Parameter parameter;
        if ((result = sd_bus_message_read_basic(message, 's', &keyword)) < 0 ||
            (result = sd_bus_message_enter_container(message, 'r', "sv")) < 0 ||
            (result = sd_bus_message_read_basic(message, 's', &type)) < 0)
            return result;
        parameter.type = type;
        if ((result = read_value(message, parameter)) < 0 ||
            (result = sd_bus_message_exit_container(message)) < 0 ||
            (result = sd_bus_message_exit_container(message)) < 0)
            return result;
        parameters[keyword] = parameter;
    }
    return result < 0 ? result : sd_bus_message_exit_container(message);
}

int append_parameters(sd_bus_message *message, const Parameters &parameters) {
    int result = sd_bus_message_open_container(message, 'a', "{s(sv)}");
    for (const auto &[keyword, parameter] : parameters) {
        if (result < 0)
            return result;
        const bool text = is_utf8(parameter.bytes);
        const char *const contents = parameter.is_number ? "i" : text ? "s" : "ay";
        sd_bus_message_open_container(message, 'e', "s(sv)");
        sd_bus_message_append_basic(message, 's', keyword.c_str());
        sd_bus_message_open_container(message, 'r', "sv");
        sd_bus_message_append_basic(message, 's', parameter.type.c_str());
        sd_bus_message_open_container(message, 'v', contents);
        if (parameter.is_number)
            result = sd_bus_message_append_basic(message, 'i', &parameter.number);
        else if (text)
            result = sd_bus_message_append_basic(message, 's', parameter.bytes.c_str());
        else
            result =
                sd_bus_message_append_array(message, 'y', parameter.bytes.data(), parameter.bytes.size());
        for (int level = 0; level < 3; level++)
            sd_bus_message_close_container(message);
    }
    return result < 0 ? result : sd_bus_message_close_container(message);
}

} // namespace toolhost
