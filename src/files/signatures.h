// Signatures of applications: from a bundle's PkgInfo, else the file's creator code.
#ifndef QUILLON_FILES_SIGNATURES_H
#define QUILLON_FILES_SIGNATURES_H

#include "toolbox/types.h"

namespace quillon {

// PATH is a Unix path. 1 and the signature, or 0 and signature 0.
int get_sig(const char *path, OSType *signature);
int IsApp(const char *path); // null counts as empty
// The creator code for text files that open in the editor at PATH.
OSType get_editor_info(const char *path);

} // namespace quillon

#endif
