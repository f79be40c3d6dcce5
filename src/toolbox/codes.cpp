#include "toolbox/codes.h"

namespace quillon {

std::string code_text(OSType code) {
    const char text[4] = {static_cast<char>(code >> 24), static_cast<char>(code >> 16),
                          static_cast<char>(code >> 8), static_cast<char>(code)};
    return std::string(text, sizeof text);
}

int parse_code(std::string_view text, OSType *code) {
    if (text.size() != 4)
        return 0;
    *code = code_of_bytes(reinterpret_cast<const unsigned char *>(text.data()));
    return 1;
}

OSType code_of_bytes(const unsigned char *bytes) {
    return OSType{bytes[0]} << 24 | OSType{bytes[1]} << 16 | OSType{bytes[2]} << 8 | OSType{bytes[3]};
}

} // namespace quillon
