#include "common/descriptors.h"

#include <algorithm>
#include <unistd.h>

namespace common {

void close_others(std::vector<int> kept) {
    std::sort(kept.begin(), kept.end());
    unsigned first = 3;
    for (const int descriptor : kept) {
        const auto number = static_cast<unsigned>(descriptor);
        if (descriptor < 3 || number < first)
            continue;
        if (number > first)
            close_range(first, number - 1, 0);
        first = number + 1;
    }
    close_range(first, ~0U, 0);
}

} // namespace common
