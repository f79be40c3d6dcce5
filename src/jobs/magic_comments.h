// Magic comments: what the first lines of a document say of the file and the program that it is typeset with.
// A setting of ours, `MAGICCOMMENTS`; while it is off nothing here is asked for.
#ifndef QUILLON_JOBS_MAGIC_COMMENTS_H
#define QUILLON_JOBS_MAGIC_COMMENTS_H

#include "toolbox/bounded.h"

namespace quillon {

// The values of "% !TEX root = ..." and "% !TEX program = ..." (or TS-program); empty where there is none.
struct MagicComments {
    BoundedString<256> root, program;
};

// Reads the magic comments in TEXT of SIZE bytes, of which only whole lines count, unless the text is the
// WHOLE file. The first comment of a kind counts. A value that does not fit counts as not there.
void parse_magic_comments(const char *text, std::size_t size, int whole, MagicComments *comments);

// Follows the roots from the file LEAF in FOLDER, a Unix path, to the one that is typeset, which then stands
// in both. PROGRAM receives the program that is asked for, empty for none. Returns 1, or 0 when no file can
// be typeset: a root is missing or leads back, which is said.
int follow_magic_comments(BoundedBuffer &folder, BoundedBuffer &leaf, BoundedBuffer &program);

} // namespace quillon

#endif
