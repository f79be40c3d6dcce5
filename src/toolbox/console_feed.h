// The console's text for the programs on the bus that have asked to follow it.
#ifndef QUILLON_TOOLBOX_CONSOLE_FEED_H
#define QUILLON_TOOLBOX_CONSOLE_FEED_H

#include <cstddef>

namespace quillon {

// 1 while some program on the bus follows the console, else 0.
int ConsoleFollowed();
// Sends LENGTH bytes that were written to the console (lines end with byte 13) to all followers. A UTF-8
// character that is not whole yet is kept back until the rest of it comes.
void FeedConsoleText(const char *text, std::size_t length);
// Tells the followers that the text from here on is a tool's transcript (BEGINS 1), or that the transcript
// has ended (0). A program that has shown the tool's output as it came leaves the transcript out.
void MarkTranscript(int begins);

} // namespace quillon

#endif
