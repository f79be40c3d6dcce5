// The current TeX file and the output files beside it.
#ifndef QUILLON_MENUS_CURRENT_FILES_H
#define QUILLON_MENUS_CURRENT_FILES_H

#include "toolbox/bounded.h"

namespace quillon {

extern BoundedString<256> mylabel; // the fixed text of File item 2

void OldTeXFile();
void OldTeXFile1();
void SetAllFiles();
// Paths are Unix paths; null clears.
void SetDviFile(const char *path);
void SetPSFile(const char *path);
void SetPDFFile(const char *path);
void SetBibFile();
void SetTeXFile(const char *path);
// Takes the source out of a command line that is about to run in DIR.
void NewSetTeXFile(const char *command_line, const char *dir);

} // namespace quillon

#endif
