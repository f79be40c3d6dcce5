// After a TeX run the shell shows the output in its viewer, or the error line in the editor.
#ifndef QUILLON_JOBS_AFTER_RUN_H
#define QUILLON_JOBS_AFTER_RUN_H

#include <cstdint>

namespace quillon {

// The output of the last run, from the setting PDFTEXOUTPUT: 0 nothing, 1 the PDF file, any other the DVI
// file.
extern std::int32_t output_is_pdf;

// Sets current_outputfile (a Unix path) from the setting PDFFILE or DVIFILE and opens it in its viewer. When
// there is nothing to view or the file is missing, current_outputfile is empty and nothing opens.
void SetViewFile();
// Opens current_outputfile in the PDF viewer, which the person chooses when none is set. Does nothing when
// the path is empty or the person cancels.
void AutoViewPDFFile();
// When calleditor is 1: clears it and opens the file of the settings FILENAME and LINENUMBER in the editor at
// that line. Without an editor the console says where the error is.
void CallTheEditor();
// Opens editfile (a Unix path) in the editor at editlinenumber; the person chooses an editor when none is
// set. Without one the console says where the place is.
void OpenEditorAtPlace();
// Follow a run of TeX or pdfTeX: show the arrow, store curr_dir as TEXDIR, view the output of a clean run
// when doView and job_views are 1, and call the editor unless job_edits is 0.
void doAfterTeX();
void doAfterPdfTeX();

} // namespace quillon

#endif
