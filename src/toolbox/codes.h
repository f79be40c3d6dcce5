// Four-character codes (types, creators, signatures, event ids) as text and as bytes.
#ifndef QUILLON_TOOLBOX_CODES_H
#define QUILLON_TOOLBOX_CODES_H

#include <string>
#include <string_view>

#include "toolbox/types.h"

namespace quillon {

// The four characters of CODE, the high byte first; always four, NUL bytes too.
std::string code_text(OSType code);
// Sets CODE to the code that TEXT spells: 1, or 0 (CODE stays as it is) when TEXT is not exactly four bytes.
int parse_code(std::string_view text, OSType *code);
// The code that the four bytes at BYTES spell; the first goes into the high byte.
OSType code_of_bytes(const unsigned char *bytes);

} // namespace quillon

#endif
