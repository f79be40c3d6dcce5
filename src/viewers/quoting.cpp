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

int quote_word(const char *name, BoundedBuffer &out) {
    static const char plain[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-/+";
    if (*name && !name[std::strspn(name, plain)])
        return out.copy(name);
    if (!out.copy("'"))
        return 0;
    for (const char *p = name; *p; p++)
        if (!(*p == '\'' ? out.append("'\\''") : out.append({p, 1})))
            return 0;
    return out.append("'");
}

} // namespace quillon
