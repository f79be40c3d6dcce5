// The forms of path: POSIX paths, Unix paths as the settings hold them, and lists of paths. Nothing here asks
// the file system but canonical_path and from_working_folder.
#ifndef QUILLON_COMMON_PATH_FORMS_H
#define QUILLON_COMMON_PATH_FORMS_H

#include <string>
#include <string_view>
#include <vector>

namespace common {

// Stands for a colon in a Unix path, and in a name of the shell's.
constexpr char colon_byte = 30;

// Return a POSIX path as a Unix path and the other way round. In a Unix path the byte SPACE stands for a
// blank and colon_byte for a colon.
std::string to_unix_path(std::string_view posix, unsigned char space);
std::string to_posix_path(std::string_view unix_path, unsigned char space);
// Returns the POSIX path that a setting's value (a Unix path) means. A leading "~" stands for HOME, the
// binaries folder, and a leading "~/.." for the folder above it.
std::string expand_setting_path(std::string_view value, const std::string &home, unsigned char space);

// Returns PATH when it is absolute, else PATH below FOLDER. Every "./" at the head of PATH is dropped.
std::string absolute_path(const std::string &folder, std::string path);
// Returns PATH as an absolute path, seen from the working folder of this process. "/" takes the place of a
// working folder that is gone.
std::string from_working_folder(const std::string &path);
// Returns PATH with every symbolic link resolved, or PATH as it is when nothing is there.
std::string canonical_path(const std::string &path);
// Returns the part after the last slash, or all of a path without a slash.
std::string leaf_of(const std::string &path);
// Returns PATH without its last LEVELS components. Empty when it has no more than these.
std::string folder_above(std::string path, int levels = 1);
// Returns the elements between the colons of LIST, empty ones included. An empty list has one empty element.
std::vector<std::string> split_list(std::string_view list);
// Returns the URI of the local file at PATH: "file://" and the path, percent-encoded.
std::string file_uri(std::string_view path);
// Returns the path in a URI that begins with "file://", whatever host it names. Empty for any other URI.
std::string path_of_uri(std::string_view uri);

} // namespace common

#endif
