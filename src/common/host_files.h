// Looks at the files of this host.
#ifndef QUILLON_COMMON_HOST_FILES_H
#define QUILLON_COMMON_HOST_FILES_H

#include <cstddef>
#include <string>

namespace common {

// All paths are POSIX paths; a symbolic link counts as what it leads to.
bool is_regular_file(const std::string &path);
bool is_folder(const std::string &path);
// True for a regular file that this user may execute.
bool can_run(const std::string &path);
// The contents of the file at PATH, up to LIMIT bytes and the rest of the block that reaches it; empty when
// it cannot be read. A pipe of that name does not hold the caller up.
std::string read_file(const std::string &path, std::size_t limit);
// Makes the folder at PATH with every missing one above it, of mode MODE. False when it is not there
// afterwards.
bool make_folders(const std::string &path, unsigned mode);
// The absolute path of PROGRAM along SEARCH, a list as PATH is, of which only absolute folders count; empty
// when there is none. A name with a slash is taken in FOLDER.
std::string find_program(const std::string &program, const std::string &search, const std::string &folder);

} // namespace common

#endif
