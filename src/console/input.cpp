// Console input: the shell reads lines that the person types at the end of the console's text.
#include <algorithm>

#include "console/output.h"
#include "console/window.h"
#include "core/event_loop.h"
#include "files/streams.h"
#include "state/cursors.h"
#include "state/job_state.h"
#include "toolbox/text_engine.h"
#include "tools/processes.h"

namespace quillon {

std::int32_t get_text = 0;
static unsigned char done = 0;
static std::int32_t max_get = 0;
static std::size_t firstChar = 0, lastChar = 0;
static std::uint32_t linesOfText = 0;

static char line_buffer[1024];
static const char *line_place = line_buffer;
static std::size_t line_count = 0;

// Returns where the selection starts. While the shell waits for input that is the end of the console's text.
static std::size_t selection_start() {
    std::size_t start = 0, end = 0;
    TXNGetSelection(text, &start, &end);
    return start;
}

static std::uint32_t line_total() {
    std::uint32_t count = 0;
    TXNGetLineCount(text, &count);
    return count;
}

// Copies the typed text into BUFFER and the log file, and returns its length.
static std::size_t take_typed(char *buffer, std::int32_t maximum) {
    std::size_t start = 0;
    TXNGetSelection(text, &start, &lastChar);
    const std::size_t length =
        TXNGetData(text, firstChar, lastChar, buffer, static_cast<std::size_t>(maximum));
    std::replace(buffer, buffer + length, '\r', '\n');
    buffer[length] = '\0';
    if (logRef != -1) {
        long count = static_cast<long>(length);
        FSWrite(logRef, &count, buffer);
    }
    return length;
}

std::size_t ReadCharsFromConsole(char *buffer, std::int32_t maximum) {
    DoNotify();
    max_get = maximum;
    restore();
    get_text = 1;
    done = 0;
    if (!inBackground) {
        TXNFocus(text, 1);
        TXNActivate(text, 1);
        TXNUpdate(text);
    }
    TXNShowSelection(text, 1);
    linesOfText = line_total();
    firstChar = selection_start();
    // Events of other programs stay in the queue until the line is complete.
    while (!done)
        main_event(mask_no_high_level);
    TXNShowSelection(text, 0);
    get_text = 0;
    return take_typed(buffer, maximum);
}

void CheckLineCount() {
    if (get_text != 1)
        return;
    const std::size_t start = selection_start();
    std::size_t end = 0, unused = 0;
    TXNGetSelection(text, &unused, &end);
    if (start < firstChar)
        firstChar = start;
    const std::uint32_t count = line_total();
    if (count > linesOfText)
        done = 1;
    else
        linesOfText = count;
    if (end - firstChar + 1 >= static_cast<std::size_t>(max_get))
        done = 1;
}

int ml_fgetc(std::FILE *stream) {
    if (stream != stdin)
        return std::fgetc(stream);
    if (line_count == 0) {
        line_count = ReadCharsFromConsole(line_buffer, sizeof line_buffer - 1);
        line_place = line_buffer;
    }
    // Kept on purpose: the byte is taken as a signed number, so 255 reads as the end of the file.
    const int character = static_cast<signed char>(*line_place++);
    if (character != 0)
        return character;
    line_count = 0;
    return -1;
}

char *ml_fgets(char *buffer, int size, std::FILE *stream) {
    if (stream != stdin)
        return mfgets(buffer, size, stream);
    ReadCharsFromConsole(buffer, size - 1);
    return buffer;
}

} // namespace quillon
