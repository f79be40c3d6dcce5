// The preferences that a new user starts with.
#ifndef QUILLON_SETPATHS_DEFAULTS_H
#define QUILLON_SETPATHS_DEFAULTS_H

#include <string>
#include <utility>
#include <vector>

namespace setpaths {

// Keys and values as the preferences hold them.
using Values = std::vector<std::pair<std::string, std::string>>;

struct Proposal {
    std::string programs; // the folder of the TeX programs; empty when there are none
    Values values;        // for a person who has set nothing
    unsigned char space;  // stands for a blank in them
};

// HOME is the binaries folder; PROGRAMS as find_distribution takes it.
Proposal propose(const std::string &home, const std::string &programs);
// Writes CHANGES, then what of the proposal is not set; creates the preferences file when there is none.
// False when it cannot be written.
bool write_settings(const Values &changes, const Proposal &proposal);

// Creates the preferences file when there is none, and fills in what is not set; a value that is set stays.
// False when the file cannot be written.
bool write_defaults(const std::string &home);
// Makes the user's formats folder with its two commented files, where they are missing.
bool make_formats_folder();

} // namespace setpaths

#endif
