// The standard-output family that writes into the console, console input, and the tools' log files.
//
// Text in the console uses byte 13 as its line end; every writer here turns 10 into 13. Formatted text that
// does not fit the 20,480-byte buffer is cut there, and the console says so.
#ifndef QUILLON_CONSOLE_OUTPUT_H
#define QUILLON_CONSOLE_OUTPUT_H

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "toolbox/files.h"

namespace quillon {

int ml_printf(const char *format, ...) __attribute__((format(printf, 1, 2)));
int ml_fprintf(std::FILE *stream, const char *format, ...) __attribute__((format(printf, 2, 3)));
int ml_fputs(const char *text, std::FILE *stream);
int ml_puts(const char *text);
int ml_putc(int character, std::FILE *stream);
int ml_fputc(int character, std::FILE *stream);
int ml_putchar(int character);
int text_printf(const char *format, ...) __attribute__((format(printf, 1, 2)));
std::size_t WriteCharsToConsole(const char *text, std::size_t length);
std::size_t WriteCharsToErrorConsole(const char *text, std::size_t length);
void PutTextInfo(const char *text, std::size_t length);
void TypeString(const char *text);

int ml_fgetc(std::FILE *stream);
char *ml_fgets(char *buffer, int size, std::FILE *stream);
// BUFFER has room for MAXIMUM bytes and a NUL; the number of characters typed.
std::size_t ReadCharsFromConsole(char *buffer, std::int32_t maximum);
void CheckLineCount();
extern std::int32_t get_text;

void ReadLogFile(const FSSpec *location);
void ReadInfoFile(const FSSpec *location);

extern std::int16_t logRef; // -1: no log file is open
extern FSSpec logFileSpec;
void OpenLogFile();
void WriteLogFile();
void CloseLogFile();

int InstallConsole();
int RemoveConsole();
const char *__ttyname(int descriptor);

} // namespace quillon

#endif
