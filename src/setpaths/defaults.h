// The preferences that a new user starts with.
#ifndef QUILLON_SETPATHS_DEFAULTS_H
#define QUILLON_SETPATHS_DEFAULTS_H

#include <string>

namespace setpaths {

// Creates the preferences file when there is none, and fills in what is not set; a value that is set stays.
// HOME is the binaries folder. False when the file cannot be written.
bool write_defaults(const std::string &home);
// Makes the user's formats folder with its two commented files, where they are missing.
bool make_formats_folder();

} // namespace setpaths

#endif
