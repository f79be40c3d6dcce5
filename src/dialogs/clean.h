// The window "Clean": the files that the runs of the current document wrote, of which the person removes
// some.
#ifndef QUILLON_DIALOGS_CLEAN_H
#define QUILLON_DIALOGS_CLEAN_H

#include <cstdint>

#include "toolbox/dialogs.h"

namespace quillon {

// Lists what the runs of the current document wrote beside its output, and removes what the person leaves
// ticked. The console says how many files that were, and which could not be removed. Where there is nothing
// to remove it says that alone.
void CleanDocument();
// 1 when a file is ticked; else beeps.
int accept_clean(DialogRef window);
// Ticks all files (button 3) or none (button 4).
void tick_all_or_none(DialogRef window, std::int16_t control);

} // namespace quillon

#endif
