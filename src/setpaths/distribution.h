// The TeX distribution of this host: where it is, which trees and search paths it has.
#ifndef QUILLON_SETPATHS_DISTRIBUTION_H
#define QUILLON_SETPATHS_DISTRIBUTION_H

#include <map>
#include <string>
#include <vector>

namespace setpaths {

struct Distribution {
    std::string programs;                // the folder of its programs; empty when there is none
    bool programs_in_every_path = false; // every session finds them, one of the desktop too
    std::vector<std::string> trees;      // absolute folders without a final slash
    // Search-path variables of the shell, each a list of POSIX folders; "//" at an element's end stands for
    // all folders below. No braces, no "!!", only folders that exist.
    std::map<std::string, std::vector<std::string>> paths;
};

// PROGRAMS: the folder of its programs, where that is known; empty: along the PATH, then the usual places.
Distribution find_distribution(const std::string &programs = "");

// The elements of LIST, "!!" cut off.
std::vector<std::string> split_paths(const std::string &list);
// What PROGRAM prints when run with WORDS, without its last line end; empty on failure.
std::string output_of(const std::string &program, std::vector<std::string> words);

} // namespace setpaths

#endif
