// Makes the uncompressed copies of formats, and keeps their folder tidy.
#ifndef QUILLON_BACKGROUND_UNPACK_H
#define QUILLON_BACKGROUND_UNPACK_H

#include <cstdint>
#include <functional>
#include <string>

#include "toolhost/format_copies.h"

namespace background {

enum class Unpacked { no, yes, ended_early };

// Unpacks the format at PACKED into a new file at PATH. LENGTH receives the number of bytes. The answer is
// "no" for a file that is not compressed, damaged, too large, or no format of ENGINE; "ended early" when the
// file cannot be read or written, or when GOES_ON answers false, which is asked between pieces of work.
Unpacked unpack_format(const std::string &packed, const std::string &path, const std::string &engine,
                       const std::function<bool()> &goes_on, std::uint64_t *length);

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
