#include "common/clock.h"

#include <ctime>

namespace common {

std::uint64_t now_microseconds() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000 +
           static_cast<std::uint64_t>(now.tv_nsec) / 1000;
}

} // namespace common
