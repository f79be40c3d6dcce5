// The shell has the viewer show the place of the output that belongs to a line of the source.
#ifndef QUILLON_JOBS_FORWARD_SEARCH_H
#define QUILLON_JOBS_FORWARD_SEARCH_H

namespace quillon {

// 1 when the current document has a PDF or a DVI file, else 0.
int has_shown_output();
// Brings the viewer of the current document's output forward, at the line that was edited last, else at the
// first problem of the last run that has a line. Of a PDF and a DVI file it shows the one that the last run
// wrote. The console says why when no place is shown.
void ShowInViewer();

} // namespace quillon

#endif
