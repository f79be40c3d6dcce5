// The TeX distribution of this host: where it is, and which trees and search paths it has. All paths are
// POSIX paths.
#ifndef QUILLON_SETPATHS_DISTRIBUTION_H
#define QUILLON_SETPATHS_DISTRIBUTION_H

#include <map>
#include <string>
#include <vector>

namespace setpaths {

struct Distribution {
    std::string programs;                // the folder of its programs; empty when there is none
    bool programs_in_every_path = false; // a session of the desktop finds them too, not only a terminal's
    std::vector<std::string> trees;      // absolute folders without a final slash
    // The search-path settings, from key to list of folders; "//" at an element's end stands for all folders
    // below. There are no braces and no "!!" in them. The folders exist, but for those of the person's own
    // tree.
    std::map<std::string, std::vector<std::string>> paths;
};

// Asks the distribution whose programs are in the folder PROGRAMS. When it is empty, pdftex is looked for
// along PATH, then in the usual places. A folder without kpsewhich gives no trees and no search paths.
Distribution find_distribution(const std::string &programs = "");

// Returns the elements between the colons of LIST, without the empty ones. "!!" at the head of an element is
// cut off, and of three or more slashes at its end two stay.
std::vector<std::string> split_paths(const std::string &list);

} // namespace setpaths

#endif
