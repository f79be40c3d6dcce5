// The shell chooses the mouse cursor that it shows.
#ifndef QUILLON_STATE_CURSORS_H
#define QUILLON_STATE_CURSORS_H

namespace quillon {

// Sets the cursors of the job state (myArrow, waitCursor, editCursor) to the system's own and shows the
// arrow.
void SetUpCursors();
// Each of these three shows one cursor until another is asked for: the arrow (the shell is ready), the watch
// (the person has to wait), the I-beam (text can be edited).
void restore();
void mywait();
void SetEditCursor();

} // namespace quillon

#endif
