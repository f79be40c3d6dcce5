// Where a settings file is written, and how.
#ifndef QUILLON_SETPATHS_SETTINGS_PLACE_H
#define QUILLON_SETPATHS_SETTINGS_PLACE_H

#include <string>

namespace setpaths {

// Returns where a file at PATH would be made: where PATH leads, when it is a symbolic link. Links are
// followed as far as the system follows them, also to nothing.
std::string place_of(std::string path);
// Writes all of TEXT to the descriptor FILE. False with errno set when the disk does not take it.
bool write_whole(int file, const std::string &text);

} // namespace setpaths

#endif
