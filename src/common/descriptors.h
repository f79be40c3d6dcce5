// Descriptors that a new program is not to have.
#ifndef QUILLON_COMMON_DESCRIPTORS_H
#define QUILLON_COMMON_DESCRIPTORS_H

#include <vector>

namespace common {

// Closes every descriptor from 3 up that is not among KEPT; entries below 3 count for nothing.
void close_others(std::vector<int> kept);

} // namespace common

#endif
