// UTF-8: whether bytes are well-formed, and how text of any bytes becomes UTF-8.
#ifndef QUILLON_COMMON_UTF8_H
#define QUILLON_COMMON_UTF8_H

#include <cstddef>
#include <string>
#include <string_view>

namespace common {

// Returns the number of bytes, 1 to 4, of the well-formed character that begins at byte AT. 0 when there is
// none. Surrogates, overlong forms and codes above 10FFFF are not well-formed.
std::size_t utf8_length(std::string_view text, std::size_t at);
// True when a bus string can hold TEXT: it is well-formed and has no zero byte.
bool is_utf8(std::string_view text);

// Turns console text that comes in pieces into UTF-8 for another program. A character that is cut off at the
// end of one piece is kept until the next.
class Utf8Feed {
  public:
    // Returns the text that is complete: bytes that are not UTF-8 become replacement characters, byte 13
    // becomes byte 10, zero bytes are left out. A character that is cut off at the end is kept for the next
    // call.
    std::string take(std::string_view text);
    // Returns a replacement character for what was kept, or an empty text when nothing was.
    std::string finish();

  private:
    std::string kept_;
};

// Returns the whole of TEXT as a Utf8Feed gives it, with a replacement character for one that is cut off at
// the end.
std::string valid_utf8(std::string_view text);

} // namespace common

#endif
