// The console's text as other programs follow it.
#ifndef QUILLON_TOOLBOX_CONSOLE_FEED_H
#define QUILLON_TOOLBOX_CONSOLE_FEED_H

#include <cstddef>

namespace quillon {

// 1 while some client has asked for the console's text.
int ConsoleFollowed();
// Sends what was written to the console (byte 13 as line end) to the clients that asked.
void FeedConsoleText(const char *text, std::size_t length);
// Tells them that the console's text from here on is a tool's transcript (BEGINS 1), or is so no longer (0):
// a client that has shown the tool's output as it came need not show it again.
void MarkTranscript(int begins);

} // namespace quillon

#endif
