// Shell commands hold paths between double quotes; this procedure makes a path safe there.
#ifndef QUILLON_VIEWERS_QUOTING_H
#define QUILLON_VIEWERS_QUOTING_H

#include "toolbox/bounded.h"

namespace quillon {

// Copies PATH, in any form, into OUT with a backslash before each character that a shell treats specially
// between double quotes. Returns 1, or 0 when the result does not fit.
int quote_path(const char *path, BoundedBuffer &out);

} // namespace quillon

#endif
