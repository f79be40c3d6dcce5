// The command line of a run, cut into words, and what the words say to an engine.
#ifndef QUILLON_TOOLHOST_WORDS_H
#define QUILLON_TOOLHOST_WORDS_H

#include <string>
#include <string_view>
#include <vector>

namespace toolhost {

// Returns the words of LINE. Blanks, tabs and line ends part them, except between double quotes, which are
// dropped; an open quote reaches to the end. In the words the byte SPACE becomes a blank and byte 30 a colon.
std::vector<std::string> split_words(std::string_view line, unsigned char space);

// Returns the value of the option -NAME=VALUE or -NAME VALUE (one or two dashes). Empty when there is none.
// The first word, the command, is no option.
std::string option_value(const std::vector<std::string> &words, std::string_view name);
// True when -NAME or --NAME is among the words after the first.
bool has_option(const std::vector<std::string> &words, std::string_view name);
// Returns the file that the words of an engine's command name, without a "*" before it. Options with their
// values, "&FORMAT" and TeX commands are passed over. Empty when there is none.
std::string main_file(const std::vector<std::string> &words);

} // namespace toolhost

#endif
