// The clock that intervals are measured with.
#ifndef QUILLON_COMMON_CLOCK_H
#define QUILLON_COMMON_CLOCK_H

#include <cstdint>

namespace common {

// Returns the microseconds of the monotonic clock, which no change of the date moves.
std::uint64_t now_microseconds();

} // namespace common

#endif
