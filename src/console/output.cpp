#include "console/output.h"

#include <algorithm>
#include <cstdarg>
#include <cstring>

#include "console/window.h"
#include "state/job_scope.h"
#include "toolbox/console_feed.h"
#include "toolbox/text_engine.h"

namespace quillon {

static char buff[20480];       // for ml_printf, ml_fprintf and ml_puts
static char text_buffer[2048]; // for text_printf
static std::uint32_t lines = 0;

static const char cut_notice[] = "\r[The rest of this message does not fit.]\r";
static const char file_cut_notice[] = "\n[The rest of this message does not fit.]\n";

// Appends bytes to the console's text, to its log file and to what its followers receive. Nothing else does.
static void append(const char *bytes, std::size_t length) {
    if (length == 0)
        return;
    TXNSetData(text, bytes, length);
    if (logRef != -1) {
        long count = static_cast<long>(length);
        FSWrite(logRef, &count, bytes);
    }
    if (ConsoleFollowed())
        FeedConsoleText(bytes, length);
}

std::size_t WriteCharsToConsole(const char *bytes, std::size_t length) {
    append(bytes, length);
    std::uint32_t count = 0;
    TXNGetLineCount(text, &count);
    if (count != lines) {
        TXNUpdate(text);
        checkEvt();
        lines = count;
    }
    return length;
}

std::size_t WriteCharsToErrorConsole(const char *bytes, std::size_t length) {
    return WriteCharsToConsole(bytes, length);
}

void PutTextInfo(const char *bytes, std::size_t length) {
    append(bytes, length);
}

void TypeString(const char *string) {
    PutTextInfo(string, std::strlen(string));
}

static void line_feeds_to_returns(char *bytes, std::size_t length) {
    std::replace(bytes, bytes + length, '\n', '\r');
}

// Formats into BUFFER of ROOM bytes, prints that and returns its length. The console says so when the text is
// cut.
static int print(char *buffer, std::size_t room, const char *format, std::va_list values) {
    const int wanted = std::vsnprintf(buffer, room, format, values);
    const std::size_t length = std::strlen(buffer);
    line_feeds_to_returns(buffer, length);
    WriteCharsToConsole(buffer, length);
    if (wanted >= static_cast<int>(room))
        WriteCharsToConsole(cut_notice, sizeof cut_notice - 1);
    return static_cast<int>(length);
}

int ml_printf(const char *format, ...) {
    std::va_list values;
    va_start(values, format);
    const int length = print(buff, sizeof buff, format, values);
    va_end(values);
    return length;
}

int text_printf(const char *format, ...) {
    std::va_list values;
    va_start(values, format);
    const int length = print(text_buffer, sizeof text_buffer, format, values);
    va_end(values);
    return length;
}

static int is_console(const std::FILE *stream) {
    return stream == stdout || stream == stderr;
}

int ml_fprintf(std::FILE *stream, const char *format, ...) {
    std::va_list values;
    va_start(values, format);
    int length = 0;
    if (is_console(stream)) {
        length = print(buff, sizeof buff, format, values);
    } else {
        length = std::vsnprintf(buff, sizeof buff, format, values);
        std::fputs(buff, stream);
        if (length >= static_cast<int>(sizeof buff))
            std::fputs(file_cut_notice, stream);
    }
    va_end(values);
    return length;
}

int ml_puts(const char *string) {
    const std::size_t length = std::strlen(string);
    for (std::size_t done = 0; done < length;) {
        const std::size_t piece = std::min(length - done, sizeof buff);
        std::memcpy(buff, string + done, piece);
        line_feeds_to_returns(buff, piece);
        WriteCharsToConsole(buff, piece);
        done += piece;
    }
    return static_cast<int>(length);
}

int ml_fputs(const char *string, std::FILE *stream) {
    return is_console(stream) ? ml_puts(string) : std::fputs(string, stream);
}

int ml_putchar(int character) {
    const char byte = character == '\n' ? '\r' : static_cast<char>(character);
    if (byte != 0)
        WriteCharsToConsole(&byte, 1);
    return character;
}

int ml_putc(int character, std::FILE *) {
    // Kept on purpose: the character goes to the console whatever the stream is.
    return ml_putchar(character);
}

int ml_fputc(int character, std::FILE *stream) {
    return ml_putc(character, stream);
}

int InstallConsole() {
    return 0;
}

int RemoveConsole() {
    return 0;
}

const char *__ttyname(int descriptor) {
    return descriptor >= 0 && descriptor <= 2 ? "null device" : nullptr;
}

} // namespace quillon
