// The lines and steps of a script, as they come from its file.
#ifndef QUILLON_HEADLESS_SCRIPT_LINES_H
#define QUILLON_HEADLESS_SCRIPT_LINES_H

#include <string>

namespace quillon {

// Opens the script at the POSIX path ("-": standard input), and closes one that was open: 1, or 0 when it
// cannot be opened, which changes nothing.
int OpenScriptLines(const char *path);
int ScriptIsOpen();
// 1 when all that there will ever be of the script was read; lines of it may still be left.
int ScriptEnded();
// Sets LINE to the next line, without its line end, and leaves it there. False when there is none now.
bool PeekLine(std::string *line);
// Sets WORD and REST to the next step, past blank lines and comments, and leaves it. False as PeekLine.
bool PeekStep(std::string *word, std::string *rest);
// Takes the next line away.
void DropLine();

} // namespace quillon

#endif
