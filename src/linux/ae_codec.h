// Parameters on the wire: keyword -> (type, value).
#ifndef QUILLON_LINUX_AE_CODEC_H
#define QUILLON_LINUX_AE_CODEC_H

#include <systemd/sd-bus.h>

#include <string>

#include "toolbox/apple_events.h"

namespace quillon {

// Appends the items of RECORD as a{s(sv)}. Negative errno on failure.
int encode_parameters(sd_bus_message *message, const AppleEvent *record);
// Reads a{s(sv)} into RECORD (an empty record). Negative errno when a value has the wrong type or a path
// cannot be a location.
int decode_parameters(sd_bus_message *message, AppleEvent *record);

std::string code_text(OSType code);
// 1 when TEXT is exactly four characters.
int parse_code(const char *text, OSType *code);
bool is_utf8(const char *text, std::size_t size);

} // namespace quillon

#endif
