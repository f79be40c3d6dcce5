// What `quillon exec -f` shows of a run: the tool's output as it comes, and the console's text.
#ifndef QUILLON_CLIENT_LIVE_OUTPUT_H
#define QUILLON_CLIENT_LIVE_OUTPUT_H

#include <string>
#include <string_view>

namespace client {

// Decides what of both is shown, so that nothing is shown twice.
class LiveOutput {
  public:
    // Returns what is to be shown of the tool's output. What a person typed is left out once: the person's
    // terminal has shown it, and the tool's terminal repeats it.
    std::string tool_text(std::string_view bytes);
    // Says what a person has typed on a terminal.
    void expect_echo(std::string_view typed) { echo_ += typed; }
    // Returns what is to be shown of console text, with line feeds. The transcript of output that was shown
    // live is left out.
    std::string console_text(std::string_view text);
    // Says that a tool's transcript begins (true) or ends (false) in the console's text.
    void transcript(bool begins) { in_transcript_ = begins; }

  private:
    std::string echo_;   // what was typed and not repeated yet
    bool shown_ = false; // some output was shown live
    bool in_transcript_ = false;
};

} // namespace client

#endif
