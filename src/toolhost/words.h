// The command line of a run: cut into words, and what its words say to the engines.
#ifndef QUILLON_TOOLHOST_WORDS_H
#define QUILLON_TOOLHOST_WORDS_H

#include <string>
#include <string_view>
#include <vector>

namespace toolhost {

// Cuts LINE at blanks; double quotes group and vanish, an open quote reaches to the end. In the words the
// byte SPACE becomes a blank and byte 30 a colon.
std::vector<std::string> split_words(std::string_view line, unsigned char space);

// The value of -NAME=VALUE or -NAME VALUE (one or two dashes); empty when the option is absent.
std::string option_value(const std::vector<std::string> &words, std::string_view name);
// Whether -NAME or --NAME stands among the words.
bool has_option(const std::vector<std::string> &words, std::string_view name);
// The file that an engine's words name, without "*" or "&FORMAT" before it; empty when there is none.
std::string main_file(const std::vector<std::string> &words);

} // namespace toolhost

#endif
