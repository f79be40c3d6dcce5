// The words of a script line.
#ifndef QUILLON_HEADLESS_SCRIPT_WORDS_H
#define QUILLON_HEADLESS_SCRIPT_WORDS_H

#include <string>
#include <vector>

namespace quillon {

// Cuts the first word off LINE; the rest keeps its inner blanks, without those around it.
std::string TakeWord(std::string *line);
// The words of LINE; double or single quotes group, a backslash in double quotes stands before \ " n r.
std::vector<std::string> SplitWords(const std::string &line);

} // namespace quillon

#endif
