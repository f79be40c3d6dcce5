// What a followed run shows: the tool's output as it comes, and the console's text without its second copy.
#ifndef QUILLON_CLIENT_LIVE_OUTPUT_H
#define QUILLON_CLIENT_LIVE_OUTPUT_H

#include <string>
#include <string_view>

namespace client {

class LiveOutput {
  public:
    // Text of the tool as it is to be shown: ECHO, what the person typed and the terminal here has shown
    // already, is left out once.
    std::string tool_text(std::string_view bytes);
    void expect_echo(std::string_view typed) { echo_ += typed; }
    // Console text as it is to be shown: the transcript of what was shown live is left out. Line ends become
    // line feeds.
    std::string console_text(std::string_view text);

  private:
    std::string shown_; // the tool's whole output, line ends as line feeds
    std::string echo_;
    std::size_t passed_ = 0; // how much of shown_ the console has repeated
    bool after_return_ = false;
};

} // namespace client

#endif
