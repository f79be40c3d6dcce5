// The file databases: plain text lists of folders and the files in them.
#ifndef QUILLON_SETPATHS_DATABASES_H
#define QUILLON_SETPATHS_DATABASES_H

#include <string>
#include <vector>

namespace setpaths {

// The lines of a database over FOLDERS (POSIX; "//" at the end takes in every folder below): "/FOLDER/", then
// the names of its files, one a line, as Unix paths with SPACE for blanks. Folders without files have no
// line.
std::string database_text(const std::vector<std::string> &folders, unsigned char space);

// Rewrites the five databases in the support folder from the settings. False when one cannot be written.
bool write_databases(const std::string &home);

// Writes TEXT to a new file that then takes the place of PATH.
bool replace_file(const std::string &path, const std::string &text);

} // namespace setpaths

#endif
