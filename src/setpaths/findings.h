// What the set-up found on this host, in sentences for the person.
#ifndef QUILLON_SETPATHS_FINDINGS_H
#define QUILLON_SETPATHS_FINDINGS_H

#include <string>
#include <vector>

#include "setpaths/defaults.h"

namespace setpaths {

struct Finding {
    bool good; // false for what is missing
    std::string text;
};

// Tells of the engine, the formats and the companion programs of the proposal's distribution. For what is
// missing it names the package.
std::vector<Finding> findings(const Proposal &proposal);

} // namespace setpaths

#endif
