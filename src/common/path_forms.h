// The forms of path: POSIX paths, Unix paths as the settings hold them, and lists of paths.
#ifndef QUILLON_COMMON_PATH_FORMS_H
#define QUILLON_COMMON_PATH_FORMS_H

#include <string>
#include <string_view>
#include <vector>

namespace common {

// A POSIX path as a Unix path: blanks become SPACE, colons byte 30. And back.
std::string to_unix_path(std::string_view posix, unsigned char space);
std::string to_posix_path(std::string_view unix_path, unsigned char space);
// The POSIX path of a setting's value: a leading "~" is HOME (the binaries folder), "~/.." its parent.
std::string expand_setting_path(std::string_view value, const std::string &home, unsigned char space);

// PATH itself when it is absolute, else PATH in FOLDER; "./" at its head vanishes.
std::string absolute_path(const std::string &folder, std::string path);
// PATH made absolute against this process's working folder ("/" where that has gone).
std::string from_working_folder(const std::string &path);
// PATH with every symbolic link resolved; PATH itself when nothing is there.
std::string canonical_path(const std::string &path);
// The part behind the last slash; the whole of a path without one.
std::string leaf_of(const std::string &path);
// PATH without its last LEVELS components; empty when it has no more than these.
std::string folder_above(std::string path, int levels = 1);
// The elements between the colons of LIST, empty ones included; one empty element for an empty list.
std::vector<std::string> split_list(std::string_view list);
// PATH as the name of a local file in a URI: "file://" and the path, percent-encoded.
std::string file_uri(std::string_view path);
// The path of a file URI; empty when URI names no local file.
std::string path_of_uri(std::string_view uri);

} // namespace common

#endif
