// The words of a script line.
#ifndef QUILLON_HEADLESS_SCRIPT_WORDS_H
#define QUILLON_HEADLESS_SCRIPT_WORDS_H

#include <string>
#include <vector>

namespace quillon {

// Cuts the first word off LINE and gives it back; "" when there is none. The rest loses its outer blanks.
std::string TakeWord(std::string *line);
// The words of LINE. Double or single quotes make one word of what they enclose; in double quotes a backslash
// makes the character behind it plain, and \n and \r stand for a line feed and a carriage return.
std::vector<std::string> SplitWords(const std::string &line);

} // namespace quillon

#endif
