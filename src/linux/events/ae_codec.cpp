#include "linux/events/ae_codec.h"

#include <algorithm>
#include <cstring>

#include "linux/events/ae_data.h"
#include "toolbox/codes.h"
#include "toolbox/files.h"

namespace quillon {

using common::Parameter;
using common::Parameters;
using common::ValueKind;

// The bytes of a descriptor as a Value; missing bytes are 0.
template <typename Value> static Value value_of(const AEDesc &desc) {
    Value value = {};
    const auto &bytes = desc.data->bytes;
    std::memcpy(&value, bytes.data(), std::min(bytes.size(), sizeof value));
    return value;
}

static std::string posix_path(const FSSpec &spec) {
    static FSRef reference;
    return FSpMakeFSRef(&spec, &reference) == noErr ? reference.path : "";
}

static Parameter parameter_of(OSType keyword, const AEDesc &value) {
    Parameter parameter;
    parameter.keyword = keyword ? code_text(keyword) : "";
    parameter.type = code_text(value.descriptorType);
    parameter.kind = ValueKind::bytes;
    if (value.descriptorType == typeLongInteger) {
        parameter.kind = ValueKind::number;
        parameter.number = value_of<std::int32_t>(value);
    } else if (value.descriptorType == typeFSS) {
        parameter.bytes = posix_path(value_of<FSSpec>(value));
    } else if (value.descriptorType == typeAEList) {
        parameter.kind = ValueKind::list;
        for (const AEItem &item : value.data->items)
            parameter.items.push_back(parameter_of(0, item.value));
    } else {
        parameter.bytes.assign(value.data->bytes.begin(), value.data->bytes.end());
    }
    return parameter;
}

Parameters parameters_of(const AppleEvent &record) {
    Parameters parameters;
    if (record.data)
        for (const AEItem &item : record.data->items)
            parameters.push_back(parameter_of(item.keyword, item.value));
    return parameters;
}

static int make_location(const std::string &path, AEDesc *value) {
    FSSpec spec;
    const OSErr error = FSPathMakeSpec(path.c_str(), &spec);
    if (path.find('\0') != std::string::npos || (error != noErr && error != fnfErr))
        return 0;
    AECreateDesc(typeFSS, &spec, sizeof spec, value);
    return 1;
}

// Makes VALUE of the parameter: 1, or 0 when they do not fit. The caller disposes of VALUE in both cases.
static int make_value(const Parameter &parameter, AEDesc *value) {
    OSType type = 0;
    if (!parse_code(parameter.type, &type))
        return 0;
    const ValueKind wanted = type == typeAEList        ? ValueKind::list
                             : type == typeLongInteger ? ValueKind::number
                                                       : ValueKind::bytes;
    if (parameter.kind != wanted)
        return 0;
    if (type == typeFSS)
        return make_location(parameter.bytes, value);
    if (type == typeLongInteger) {
        AECreateDesc(type, &parameter.number, sizeof parameter.number, value);
        return 1;
    }
    AECreateDesc(type, parameter.bytes.data(), parameter.bytes.size(), value);
    for (const Parameter &item : parameter.items) {
        AEDesc item_value;
        const int made = make_value(item, &item_value);
        ae_append(value, 0, item_value);
        if (!made)
            return 0;
    }
    return 1;
}

int take_parameters(const Parameters &parameters, AppleEvent *record) {
    for (const Parameter &parameter : parameters) {
        OSType keyword = 0;
        AEDesc value;
        if (!parse_code(parameter.keyword, &keyword) || !make_value(parameter, &value)) {
            AEDisposeDesc(&value);
            return 0;
        }
        ae_append(record, keyword, value);
    }
    return 1;
}

} // namespace quillon
