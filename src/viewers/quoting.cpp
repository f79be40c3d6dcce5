#include "viewers/quoting.h"

#include <cstring>

namespace quillon {

int quote_path(const char *path, BoundedBuffer &out) {
    out.clear();
    for (const char *p = path; *p; p++) {
        if (std::strchr("\"`$\\", *p) && !out.append("\\"))
            return 0;
        if (!out.append({p, 1}))
            return 0;
    }
    return 1;
}

} // namespace quillon
