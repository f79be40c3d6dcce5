// Small files of the cache: each a sequence of fields, each field ended by a NUL.
#ifndef QUILLON_COMMON_FIELD_FILES_H
#define QUILLON_COMMON_FIELD_FILES_H

#include <string>
#include <vector>

namespace common {

// Returns the fields of the file at the POSIX path PATH, none when it cannot be read. A last field without
// its NUL is dropped, and what is beyond 1 MiB.
std::vector<std::string> read_fields(const std::string &path);
// Returns FIELDS, none of which holds a NUL, as the contents of such a file.
std::string joined_fields(const std::vector<std::string> &fields);
// Puts a file with the contents TEXT in the place of the one at PATH. Nobody ever sees a part of it. False,
// with the old file as it was, when it cannot be written.
bool replace_file(const std::string &path, const std::string &text);

} // namespace common

#endif
