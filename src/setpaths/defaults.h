// The preferences that a new user starts with.
#ifndef QUILLON_SETPATHS_DEFAULTS_H
#define QUILLON_SETPATHS_DEFAULTS_H

#include <string>
#include <utility>
#include <vector>

namespace setpaths {

// Keys and values as the preferences hold them.
using Values = std::vector<std::pair<std::string, std::string>>;

// What the set-up proposes for a person who has set nothing.
struct Proposal {
    std::string programs; // the folder of the TeX programs, a POSIX path; empty when there are none
    Values values;
    unsigned char space; // the byte that stands for a blank in the values
};

// Returns the proposal for this host. HOME is the binaries folder, PROGRAMS the folder of the TeX programs;
// when it is empty, find_distribution looks for it.
Proposal propose(const std::string &home, const std::string &programs);
// Writes CHANGES, and those values of the proposal whose keys are not set. Makes the formats folder, with
// commented tex.cnf and pdftex.cnf, and the preferences file when they are missing. False, after a message on
// the standard error, when the preferences cannot be written.
bool write_settings(const Values &changes, const Proposal &proposal);

// Does the same with no changes and the proposal for this host. HOME is the binaries folder. A value that is
// set stays.
bool write_defaults(const std::string &home);

} // namespace setpaths

#endif
