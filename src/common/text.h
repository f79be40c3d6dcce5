// Small services for lines of text.
#ifndef QUILLON_COMMON_TEXT_H
#define QUILLON_COMMON_TEXT_H

#include <string>
#include <string_view>

namespace common {

// Returns LINE without the blanks and tabs at both ends and the carriage returns at its end.
std::string trimmed(std::string_view line);
// Returns the value of the hexadecimal digit C, small or capital; -1 when C is none.
int hex_digit(char c);

} // namespace common

#endif
