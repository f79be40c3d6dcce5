// The shell keeps a current TeX file and the output files beside it, which items of the File menu name. Paths
// are Unix paths of up to 255 bytes.
#ifndef QUILLON_MENUS_CURRENT_FILES_H
#define QUILLON_MENUS_CURRENT_FILES_H

#include "toolbox/bounded.h"

namespace quillon {

extern BoundedString<256> mylabel; // the text of the Typeset item without a file name

// Sets the current TeX file from the setting TEXFILE, and the DVI, .aux, PostScript and PDF file beside it,
// each empty when it does not exist. Without a TeX file all are empty.
void OldTeXFile();
// Sets them as OldTeXFile does, but leaves the other files as they are when there is no TeX file.
void OldTeXFile1();
// Sets them as OldTeXFile1 does, but leaves the PDF file as it is.
void SetAllFiles();
// Make PATH the current DVI, PostScript or PDF file when that file exists; otherwise, and for null, there is
// none. The items of the File menu follow.
void SetDviFile(const char *path);
void SetPSFile(const char *path);
void SetPDFFile(const char *path);
// Makes the .aux file beside the current TeX file the current BibTeX file when it exists; otherwise there is
// none.
void SetBibFile();
// Makes PATH the current TeX file and stores it as TEXFILE. A path that does not fit changes nothing.
void SetTeXFile(const char *path);
// Stores the command line that is about to run in the folder DIR. The file that it names becomes TEXFILE and
// goes to the top of the recent files, when it exists; a path that does not fit is said in the console.
void NewSetTeXFile(const char *command_line, const char *dir);

} // namespace quillon

#endif
