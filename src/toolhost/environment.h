// The environment of a run: search paths and the other settings that the programs of the distribution read.
#ifndef QUILLON_TOOLHOST_ENVIRONMENT_H
#define QUILLON_TOOLHOST_ENVIRONMENT_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "common/bundle.h"

namespace toolhost {

using Variables = std::map<std::string, std::string>;

// Whether the signature is one of the TeX engines'.
bool is_engine(const std::string &signature);

// The elements of a search-path setting that lie outside TREES (absolute folders), as an environment
// variable's value with the distribution's default in the place of the empty element. Empty when nothing is
// left to say.
std::string own_elements(std::string_view value, const std::vector<std::string> &trees,
                         const std::string &home, unsigned char space);

// "NAME = value" lines; "%" and "#" begin comments.
void read_cnf(std::string_view text, Variables &variables);

// This process's environment with what the bundle's program is to know; DELIMITER ends the here-document that
// hands a file name to the edit record.
Variables run_environment(const common::Bundle &bundle, const std::vector<std::string> &words,
                          unsigned char space, const std::string &delimiter);

// What stands for TEXEDIT: "%d" is the line, "%s" the name.
std::string edit_command(const std::string &delimiter);

} // namespace toolhost

#endif
