// What follows a run: the output in its viewer, the editor at the error line.
#ifndef QUILLON_JOBS_AFTER_RUN_H
#define QUILLON_JOBS_AFTER_RUN_H

#include <cstdint>

namespace quillon {

extern std::int32_t output_is_pdf; // 0 nothing to view, 1 PDFFILE, any other DVIFILE

void SetViewFile();
void AutoViewPDFFile();
void CallTheEditor();
void doAfterTeX();
void doAfterPdfTeX();

} // namespace quillon

#endif
