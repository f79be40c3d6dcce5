// Four-character codes as text.
#ifndef QUILLON_TOOLBOX_CODES_H
#define QUILLON_TOOLBOX_CODES_H

#include <string>
#include <string_view>

#include "toolbox/types.h"

namespace quillon {

// The four characters of CODE.
std::string code_text(OSType code);
// 1 and the code when TEXT is exactly four characters, else 0.
int parse_code(std::string_view text, OSType *code);
// The code of the four bytes at BYTES, the first in the high byte.
OSType code_of_bytes(const unsigned char *bytes);

} // namespace quillon

#endif
