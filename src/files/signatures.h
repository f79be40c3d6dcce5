// A signature is four bytes that identify an application. A bundle (".app") has it in Contents/PkgInfo; that
// of any other file is its creator code. Paths are Unix paths.
#ifndef QUILLON_FILES_SIGNATURES_H
#define QUILLON_FILES_SIGNATURES_H

#include "toolbox/types.h"

namespace quillon {

// Reads the signature of the application at PATH. Returns 1, or 0 (with the signature 0) when there is none.
int get_sig(const char *path, OSType *signature);
// Returns 1 when PATH names an application that has a signature, else 0. PATH may be null.
int IsApp(const char *path);
// Returns the creator code for text files that are to open in the editor at PATH (may be null): the editor's
// signature, 'ttxt' when there is no editor, or 'txtt' when its bundle cannot be read.
OSType get_editor_info(const char *path);

} // namespace quillon

#endif
