// Questions about the files of this host. All paths are POSIX paths.
#ifndef QUILLON_COMMON_HOST_FILES_H
#define QUILLON_COMMON_HOST_FILES_H

#include <cstddef>
#include <string>

namespace common {

// True when there is a regular file, or a folder, at PATH. A symbolic link counts as what it leads to.
bool is_regular_file(const std::string &path);
bool is_folder(const std::string &path);
// True for a regular file that this user may execute.
bool can_run(const std::string &path);
// Returns the contents of the file at PATH, empty when it cannot be read. Reading stops at the end of the
// block (8 KiB) in which LIMIT bytes are reached. A pipe of that name does not hold the caller up.
std::string read_file(const std::string &path, std::size_t limit);
// True when another program has the file at PATH open, or open for writing: the host then refuses a lease.
bool file_is_open(const std::string &path);
bool file_is_written(const std::string &path);
// Makes the folder at PATH, and every missing folder above it, with the permissions MODE. False when the
// folder is not there afterwards.
bool make_folders(const std::string &path, unsigned mode);
// Returns the absolute path of the program named PROGRAM, empty when there is none that can be run. SEARCH is
// a list of folders as in the variable PATH; relative ones are passed over. A name with a slash is not
// searched for: it is a path, relative to FOLDER.
std::string find_program(const std::string &program, const std::string &search, const std::string &folder);

} // namespace common

#endif
