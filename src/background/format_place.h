// Where the distribution finds a format, and what that rests on.
#ifndef QUILLON_BACKGROUND_FORMAT_PLACE_H
#define QUILLON_BACKGROUND_FORMAT_PLACE_H

#include <string>
#include <utility>
#include <vector>

#include "toolhost/format_copies.h"

namespace background {

struct FormatPlace {
    std::string path;                   // of the format; empty when there is none
    std::vector<std::string> variables; // the names of those that the search may read
    std::vector<std::pair<std::string, std::string>>
        stamps; // the files and folders it rests on, with their stamps
};

// Asks the distribution of the engine where SEARCH ends in ENVIRONMENT. False when the answer would hold for
// the working folder alone, or does not come.
bool find_format(const toolhost::FormatSearch &search, const toolhost::Variables &environment,
                 FormatPlace &place);

} // namespace background

#endif
