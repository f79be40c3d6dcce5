// The Build menu makes formats, and runs a command line of the person's own.
#ifndef QUILLON_JOBS_BUILDS_H
#define QUILLON_JOBS_BUILDS_H

#include <cstdint>

namespace quillon {

// Carries out item 1, 2 or 3 of the Build menu: proposes the command line that makes a format of plain TeX or
// of LaTeX, and runs what the person makes of it; 3 is Execute. Any other item does nothing.
void DoPDFBuildItem(std::int16_t item);
// Does the same for items 1 and 2 with the command lines of the TeX engine. No menu calls it.
void DoBuildItem(std::int16_t item);
// Proposes the last line that was run here, which the setting BUILDLINE keeps, and runs what the person makes
// of it.
void Execute();
// Asks for a command line and runs it as a pdfTeX job, whatever its first word is. No menu calls it.
void PDFExecute();

} // namespace quillon

#endif
