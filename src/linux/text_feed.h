// Console text on its way to another program: UTF-8, line feeds, the state kept from one write to the next.
#ifndef QUILLON_LINUX_TEXT_FEED_H
#define QUILLON_LINUX_TEXT_FEED_H

#include <cstddef>
#include <string>

namespace quillon {

class Utf8Feed {
  public:
    // The text that is complete: bytes that are not UTF-8 as replacement characters, 13 as 10, 0 left out. A
    // character cut off at the end is kept for the next call.
    std::string take(const char *text, std::size_t length);
    // What was kept, as a replacement character; empty when nothing was.
    std::string finish();

  private:
    std::string kept_;
};

} // namespace quillon

#endif
