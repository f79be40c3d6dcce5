// Texts of settings files of other programs: groups in brackets, and lines KEY=VALUE below them.
#ifndef QUILLON_SETPATHS_INI_TEXT_H
#define QUILLON_SETPATHS_INI_TEXT_H

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace setpaths {

// Keys, and values as they stand in the file.
using IniValues = std::vector<std::pair<std::string, std::string>>;

// Returns the last value of KEY in the groups of that name, as it stands in TEXT. False when there is none.
bool ini_value(std::string_view text, std::string_view group, std::string_view key, std::string *value);
// Returns TEXT with VALUES in the group: in the place of the lines that have the keys, else at the end of the
// group, else in a new group at the end. Every other line stays as it is, byte for byte.
std::string with_ini_values(std::string_view text, const std::string &group, const IniValues &values);

// Return VALUE (UTF-8) as the two kinds of settings file hold it: that of KDE's programs, and that of the
// toolkit's own settings.
std::string kde_value(std::string_view value);
std::string toolkit_value(std::string_view value);

} // namespace setpaths

#endif
