// Writes the file databases, plain text lists of folders and the files in them.
#ifndef QUILLON_SETPATHS_DATABASES_H
#define QUILLON_SETPATHS_DATABASES_H

#include <string>
#include <vector>

namespace setpaths {

// Returns the text of a database over FOLDERS, which are absolute POSIX paths; "//" at the end takes in every
// folder below. For each folder with files it has a line "/FOLDER/", then the names of the files, one a line.
// All are Unix paths with the byte SPACE for a blank. Names of more than 1000 bytes, names with a line end
// and names that begin with the digit 0 are left out.
std::string database_text(const std::vector<std::string> &folders, unsigned char space);

// Rewrites the five databases in the support folder from the settings. HOME is the binaries folder. False,
// after a message on the standard error, when one cannot be written.
bool write_databases(const std::string &home);

} // namespace setpaths

#endif
