// The cursor that the shell shows.
#ifndef QUILLON_STATE_CURSORS_H
#define QUILLON_STATE_CURSORS_H

namespace quillon {

// Fills the three cursors of the job state and shows the arrow.
void SetUpCursors();
// Each shows its cursor: the arrow, the watch, the I-beam.
void restore();
void mywait();
void SetEditCursor();

} // namespace quillon

#endif
