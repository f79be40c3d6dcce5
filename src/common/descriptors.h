// Open files that a new program must not inherit.
#ifndef QUILLON_COMMON_DESCRIPTORS_H
#define QUILLON_COMMON_DESCRIPTORS_H

#include <vector>

namespace common {

// Closes every descriptor from 3 up that is not in KEPT. Entries of KEPT below 3 have no effect, so that -1
// may stand for "none".
void close_others(std::vector<int> kept);

} // namespace common

#endif
