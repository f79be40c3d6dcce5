#include "linux/ae_codec.h"

#include <cerrno>
#include <cstring>

#include "linux/ae_data.h"
#include "toolbox/files.h"
#include "toolbox/processes.h"

namespace quillon {

std::string code_text(OSType code) {
    const char text[4] = {static_cast<char>(code >> 24), static_cast<char>(code >> 16),
                          static_cast<char>(code >> 8), static_cast<char>(code)};
    return std::string(text, 4);
}

int parse_code(const char *text, OSType *code) {
    if (std::strlen(text) != 4)
        return 0;
    *code = 0;
    for (int i = 0; i < 4; i++)
        *code = *code << 8 | static_cast<unsigned char>(text[i]);
    return 1;
}

static std::size_t utf8_length(unsigned char lead) {
    return lead < 0x80                   ? 1
           : lead >= 0xC2 && lead < 0xE0 ? 2
           : lead >= 0xE0 && lead < 0xF0 ? 3
           : lead >= 0xF0 && lead < 0xF5 ? 4
                                         : 0;
}

bool is_utf8(const char *text, std::size_t size) {
    std::size_t i = 0;
    while (i < size) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const std::size_t length = utf8_length(lead);
        if (length == 0 || i + length > size)
            return false;
        for (std::size_t k = 1; k < length; k++)
            if ((static_cast<unsigned char>(text[i + k]) & 0xC0) != 0x80)
                return false;
        if (length > 1) {
            const auto second = static_cast<unsigned char>(text[i + 1]);
            if ((lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) ||
                (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F))
                return false;
        }
        i += length;
    }
    return true;
}

static int append_bytes(sd_bus_message *message, const char *text, std::size_t size) {
    if (std::memchr(text, 0, size) || !is_utf8(text, size)) {
        int result = sd_bus_message_open_container(message, 'v', "ay");
        if (result >= 0)
            result = sd_bus_message_append_array(message, 'y', text, size);
        return result < 0 ? result : sd_bus_message_close_container(message);
    }
    return sd_bus_message_append(message, "v", "s", std::string(text, size).c_str());
}

static std::string posix_path(const FSSpec &spec) {
    static FSRef reference;
    char path[4096];
    if (FSpMakeFSRef(&spec, &reference) != noErr || FSRefMakePath(&reference, path, sizeof path) != noErr)
        return "";
    return path;
}

static int encode_value(sd_bus_message *message, const AEDesc &value);

// "(sv)", a type with its value.
static int encode_pair(sd_bus_message *message, const AEDesc &value) {
    int result = sd_bus_message_open_container(message, 'r', "sv");
    if (result >= 0)
        result = encode_value(message, value);
    return result < 0 ? result : sd_bus_message_close_container(message);
}

static int encode_list(sd_bus_message *message, const AEDesc &list) {
    int result = sd_bus_message_open_container(message, 'v', "a(sv)");
    if (result >= 0)
        result = sd_bus_message_open_container(message, 'a', "(sv)");
    for (const AEItem &item : list.data->items) {
        if (result < 0)
            return result;
        result = encode_pair(message, item.value);
    }
    if (result >= 0)
        result = sd_bus_message_close_container(message);
    return result < 0 ? result : sd_bus_message_close_container(message);
}

// The type and the value: "sv".
static int encode_value(sd_bus_message *message, const AEDesc &value) {
    int result = sd_bus_message_append(message, "s", code_text(value.descriptorType).c_str());
    if (result < 0)
        return result;
    const auto &bytes = value.data->bytes;
    if (value.descriptorType == typeLongInteger) {
        std::int32_t number = 0;
        std::memcpy(&number, bytes.data(), bytes.size() < sizeof number ? bytes.size() : sizeof number);
        return sd_bus_message_append(message, "v", "i", number);
    }
    if (value.descriptorType == typeFSS) {
        FSSpec spec = {};
        std::memcpy(&spec, bytes.data(), bytes.size() < sizeof spec ? bytes.size() : sizeof spec);
        const std::string path = posix_path(spec);
        return append_bytes(message, path.data(), path.size());
    }
    if (value.descriptorType == typeAEList)
        return encode_list(message, value);
    return append_bytes(message, reinterpret_cast<const char *>(bytes.data()), bytes.size());
}

int encode_parameters(sd_bus_message *message, const AppleEvent *record) {
    int result = sd_bus_message_open_container(message, 'a', "{s(sv)}");
    if (result >= 0 && record->data)
        for (const AEItem &item : record->data->items) {
            result = sd_bus_message_open_container(message, 'e', "s(sv)");
            if (result >= 0)
                result = sd_bus_message_append(message, "s", code_text(item.keyword).c_str());
            if (result >= 0)
                result = encode_pair(message, item.value);
            if (result >= 0)
                result = sd_bus_message_close_container(message);
            if (result < 0)
                return result;
        }
    return result < 0 ? result : sd_bus_message_close_container(message);
}

static int read_bytes(sd_bus_message *message, const char *contents, std::string *bytes) {
    int result = sd_bus_message_enter_container(message, 'v', contents);
    if (result < 0)
        return result;
    if (std::strcmp(contents, "s") == 0) {
        const char *text = nullptr;
        if ((result = sd_bus_message_read(message, "s", &text)) >= 0)
            *bytes = text;
    } else {
        const void *data = nullptr;
        std::size_t size = 0;
        if ((result = sd_bus_message_read_array(message, 'y', &data, &size)) >= 0)
            bytes->assign(static_cast<const char *>(data), size);
    }
    return result < 0 ? result : sd_bus_message_exit_container(message);
}

static int decode_value(sd_bus_message *message, AEDesc *value);

static int decode_list(sd_bus_message *message, AEDesc *value) {
    AECreateList(value);
    int result = sd_bus_message_enter_container(message, 'v', "a(sv)");
    if (result >= 0)
        result = sd_bus_message_enter_container(message, 'a', "(sv)");
    while (result >= 0 && (result = sd_bus_message_enter_container(message, 'r', "sv")) > 0) {
        AEDesc item;
        result = decode_value(message, &item);
        ae_append(value, 0, item);
        if (result >= 0)
            result = sd_bus_message_exit_container(message);
    }
    if (result >= 0)
        result = sd_bus_message_exit_container(message);
    return result < 0 ? result : sd_bus_message_exit_container(message);
}

static int decode_text(sd_bus_message *message, OSType type, const char *contents, AEDesc *value) {
    std::string bytes;
    const int result = read_bytes(message, contents, &bytes);
    if (result < 0)
        return result;
    if (type != typeFSS) {
        AECreateDesc(type, bytes.data(), bytes.size(), value);
        return 0;
    }
    FSSpec spec;
    const OSErr error = FSPathMakeSpec(bytes.c_str(), &spec);
    if (bytes.size() != std::strlen(bytes.c_str()) || (error != noErr && error != fnfErr))
        return -EINVAL;
    AECreateDesc(typeFSS, &spec, sizeof spec, value);
    return 0;
}

// The type and the value: "sv". On success VALUE owns its data.
static int decode_value(sd_bus_message *message, AEDesc *value) {
    const char *type_text = nullptr, *contents = nullptr;
    char kind = 0;
    int result = sd_bus_message_read(message, "s", &type_text);
    if (result < 0)
        return result;
    OSType type = 0;
    if (!parse_code(type_text, &type))
        return -EINVAL;
    if ((result = sd_bus_message_peek_type(message, &kind, &contents)) < 0)
        return result;
    if (type == typeAEList)
        return std::strcmp(contents, "a(sv)") == 0 ? decode_list(message, value) : -EINVAL;
    if (type == typeLongInteger) {
        std::int32_t number = 0;
        if (std::strcmp(contents, "i") != 0)
            return -EINVAL;
        if ((result = sd_bus_message_read(message, "v", "i", &number)) < 0)
            return result;
        AECreateDesc(type, &number, sizeof number, value);
        return 0;
    }
    if (std::strcmp(contents, "s") != 0 && std::strcmp(contents, "ay") != 0)
        return -EINVAL;
    return decode_text(message, type, contents, value);
}

int decode_parameters(sd_bus_message *message, AppleEvent *record) {
    int result = sd_bus_message_enter_container(message, 'a', "{s(sv)}");
    while (result >= 0 && (result = sd_bus_message_enter_container(message, 'e', "s(sv)")) > 0) {
        const char *keyword_text = nullptr;
        OSType keyword = 0;
        AEDesc value;
        if ((result = sd_bus_message_read(message, "s", &keyword_text)) < 0)
            break;
        if (!parse_code(keyword_text, &keyword))
            return -EINVAL;
        if ((result = sd_bus_message_enter_container(message, 'r', "sv")) < 0)
            break;
        if ((result = decode_value(message, &value)) < 0) {
            AEDisposeDesc(&value);
            return result;
        }
        ae_append(record, keyword, value);
        if ((result = sd_bus_message_exit_container(message)) < 0 ||
            (result = sd_bus_message_exit_container(message)) < 0)
            break;
    }
    return result < 0 ? result : sd_bus_message_exit_container(message);
}

} // namespace quillon
