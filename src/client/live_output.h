// What a followed run shows: the tool's output as it comes, and the console's text.
#ifndef QUILLON_CLIENT_LIVE_OUTPUT_H
#define QUILLON_CLIENT_LIVE_OUTPUT_H

#include <string>
#include <string_view>

namespace client {

class LiveOutput {
  public:
    // Returns the tool's text as it is to be shown. What a person typed, which the terminal has shown already
    // and the tool's own terminal repeats, is left out once.
    std::string tool_text(std::string_view bytes);
    void expect_echo(std::string_view typed) { echo_ += typed; }
    // Returns console text as it is to be shown, with line feeds. A transcript of what was shown live is left
    // out.
    std::string console_text(std::string_view text);
    // The console's text is a tool's transcript from here on, or is so no longer.
    void transcript(bool begins) { in_transcript_ = begins; }

  private:
    std::string echo_;
    bool shown_ = false;
    bool in_transcript_ = false;
};

} // namespace client

#endif
