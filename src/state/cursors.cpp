#include "state/cursors.h"

#include "state/job_state.h"
#include "toolbox/windows.h"

namespace quillon {

void SetUpCursors() {
    myArrow = arrowCursor;
    waitCursor = watchCursor;
    editCursor = iBeamCursor;
    restore();
}

void restore() {
    SetCursor(myArrow);
}

void mywait() {
    SetCursor(waitCursor);
}

void SetEditCursor() {
    SetCursor(editCursor);
}

} // namespace quillon
