// Paths inside the double quotes of a shell command.
#ifndef QUILLON_VIEWERS_QUOTING_H
#define QUILLON_VIEWERS_QUOTING_H

#include "toolbox/bounded.h"

namespace quillon {

// PATH with the characters escaped that a shell reads between double quotes. 0 when the result does not fit.
int quote_path(const char *path, BoundedBuffer &out);

} // namespace quillon

#endif
