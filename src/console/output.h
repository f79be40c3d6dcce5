// These procedures print in the console in the manner of the standard library, read from it, and write log
// files.
//
// The console's text ends its lines with byte 13. The procedures whose names begin with `ml_`, and
// text_printf, turn 10 into 13; the others write bytes as they are.
#ifndef QUILLON_CONSOLE_OUTPUT_H
#define QUILLON_CONSOLE_OUTPUT_H

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "toolbox/files.h"

namespace quillon {

// Print formatted text in the console and return the number of bytes written. A text that does not fit 20,479
// bytes is cut, and the console says so. ml_fprintf prints there for stdout and stderr; for another stream it
// writes the text to it and returns the length of the uncut text.
int ml_printf(const char *format, ...) __attribute__((format(printf, 1, 2)));
int ml_fprintf(std::FILE *stream, const char *format, ...) __attribute__((format(printf, 2, 3)));
// Print TEXT, to which nothing is added, and return its length in bytes. For a stream other than stdout and
// stderr, ml_fputs does as the library's fputs.
int ml_fputs(const char *text, std::FILE *stream);
int ml_puts(const char *text);
// Print one byte in the console, whatever STREAM is, and return it. A zero byte is not printed.
int ml_putc(int character, std::FILE *stream);
int ml_fputc(int character, std::FILE *stream);
int ml_putchar(int character);
// Prints as ml_printf does, with room for 2,047 bytes.
int text_printf(const char *format, ...) __attribute__((format(printf, 1, 2)));
// Append LENGTH bytes to the console's text and its log file, redraw when a line has been added, and return
// LENGTH.
std::size_t WriteCharsToConsole(const char *text, std::size_t length);
std::size_t WriteCharsToErrorConsole(const char *text, std::size_t length);
// Append bytes, or a text with a NUL at its end, in the same way and do not redraw.
void PutTextInfo(const char *text, std::size_t length);
void TypeString(const char *text);

// Returns the next byte of STREAM, or -1 at its end. For stdin the person types a line into the console
// first.
int ml_fgetc(std::FILE *stream);
// Reads a line into BUFFER of SIZE bytes, as mfgets does. For stdin the person types it into the console, it
// takes up to SIZE - 1 bytes, and BUFFER is returned always.
char *ml_fgets(char *buffer, int size, std::FILE *stream);
// Waits until the person has typed a line, or MAXIMUM bytes, and handles events meanwhile. BUFFER has room
// for MAXIMUM + 1 bytes and gets the text, its line end as byte 10, and a NUL. Returns the number of bytes
// typed.
std::size_t ReadCharsFromConsole(char *buffer, std::int32_t maximum);
// Ends that wait when the text typed is complete. Runs after every key.
void CheckLineCount();
extern std::int32_t get_text; // 1 while the shell waits for a typed line, else 0

// Appends a tool's log file to the console and deletes it. A file that cannot be opened is said in the
// console.
void ReadLogFile(const FSSpec *location);
// Appends a file to the console in the same way and keeps it.
void ReadInfoFile(const FSSpec *location);

extern std::int16_t logRef; // the console's open log file; -1 when there is none
extern FSSpec logFileSpec;  // the location of the log file
// Opens a new log file in the temporary folder, which then gets all that the console prints. When that fails,
// the console says so and logRef is -1.
void OpenLogFile();
// Replaces the log file's contents by the console's whole text.
void WriteLogFile();
// Closes the log file. Nothing may be printed afterwards, because logRef keeps its value.
void CloseLogFile();

// A C library calls this procedure and the next two when it looks for a console. The first two do nothing and
// return 0.
int InstallConsole();
int RemoveConsole();
// Returns a fixed name for the descriptors 0 to 2, null for any other.
const char *__ttyname(int descriptor);

} // namespace quillon

#endif
