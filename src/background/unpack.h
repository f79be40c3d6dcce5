// Makes the uncompressed copies of formats, and keeps their folder tidy.
#ifndef QUILLON_BACKGROUND_UNPACK_H
#define QUILLON_BACKGROUND_UNPACK_H

#include <functional>

#include "toolhost/format_copies.h"

namespace background {

// Makes the folder of the copies and removes what is in it of runs that were ended early, and the copies
// whose original has changed or gone. False when the folder cannot be made, or is not this user's own.
bool tidy_copies();

// Makes the copy of the format that SEARCH finds in ENVIRONMENT, unless it is there, and writes down what the
// search rests on. GOES_ON is asked between pieces of work; when it answers false, nothing more is done. A
// format that is damaged, that is no format of the engine or that is not compressed gets no copy, which is
// written down too.
void copy_format(const toolhost::FormatSearch &search, const toolhost::Variables &environment,
                 const std::function<bool()> &goes_on);

} // namespace background

#endif
