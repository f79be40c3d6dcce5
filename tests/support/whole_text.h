// The console's text, as a test looks at it.
#ifndef QUILLON_TESTS_SUPPORT_WHOLE_TEXT_H
#define QUILLON_TESTS_SUPPORT_WHOLE_TEXT_H

#include <string>

#include "toolbox/text_engine.h"

namespace quillon::test {

// All bytes of TEXT; lines end with byte 13.
inline std::string whole_text(TXNObject text) {
    std::size_t start = 0, end = 0;
    TXNGetSelection(text, &start, &end); // the caret stands at the end
    std::string bytes(end, '\0');
    TXNGetData(text, 0, end, bytes.data(), end);
    return bytes;
}

} // namespace quillon::test

#endif
