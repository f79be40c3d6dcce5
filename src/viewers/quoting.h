// Shell commands hold paths between double quotes, and messages tell commands that a person can type; these
// procedures make a name safe there.
#ifndef QUILLON_VIEWERS_QUOTING_H
#define QUILLON_VIEWERS_QUOTING_H

#include "toolbox/bounded.h"

namespace quillon {

// Copies PATH, in any form, into OUT with a backslash before each character that a shell treats specially
// between double quotes. Returns 1, or 0 when the result does not fit.
int quote_path(const char *path, BoundedBuffer &out);

// Copies NAME into OUT as one word of a command that a person types: as it is when it holds nothing but
// ASCII letters, digits and ._-/+, else between single quotes. Returns 1, or 0 when the result does not fit.
int quote_word(const char *name, BoundedBuffer &out);

} // namespace quillon

#endif
