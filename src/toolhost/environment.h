// The environment of a run. Through it the programs of the distribution get the search paths and other
// settings.
#ifndef QUILLON_TOOLHOST_ENVIRONMENT_H
#define QUILLON_TOOLHOST_ENVIRONMENT_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "common/bundle.h"

namespace toolhost {

// Environment variables, from name to value.
using Variables = std::map<std::string, std::string>;

// True when SIGNATURE is that of a TeX engine's bundle.
bool is_engine(const std::string &signature);

// True when PATH is one of the folders TREES, or lies in one.
bool lies_in(const std::string &path, const std::vector<std::string> &trees);
// Returns the elements of a search-path setting that lie outside TREES (absolute POSIX folders), as the value
// of an environment variable. An empty element in it stands for the distribution's default: at the head when
// VALUE begins with one, else at the end. Returns an empty text when no element but the current folder is
// left. HOME and SPACE are those of expand_setting_path.
std::string own_elements(std::string_view value, const std::vector<std::string> &trees,
                         const std::string &home, unsigned char space);

// Adds the variables that TEXT sets in lines "NAME = value". "%" and "#" begin comments; other lines are
// passed over.
void read_cnf(std::string_view text, Variables &variables);

// Returns the environment for a program of BUNDLE that is run with WORDS: that of this process and what the
// settings add. SPACE is the settings' byte for a blank, DELIMITER that of edit_command.
Variables run_environment(const common::Bundle &bundle, const std::vector<std::string> &words,
                          unsigned char space, const std::string &delimiter);

// Returns the value of TEXEDIT, the command that an engine runs when it is answered with "e". The engine puts
// the line for "%d" and the file name for "%s"; the command writes both to the descriptor edit_descriptor.
// DELIMITER is a line that no file name holds; it keeps the shell from reading the name.
std::string edit_command(const std::string &delimiter);

} // namespace toolhost

#endif
