// The dialogs for dvips: its stored options, and one run.
#ifndef QUILLON_DIALOGS_DVIPS_H
#define QUILLON_DIALOGS_DVIPS_H

#include "toolbox/bounded.h"
#include "toolbox/dialogs.h"

namespace quillon {

// Lets the person edit the option string that the settings store. Returns 1 when it was confirmed.
int GetAllDvipsOptions();
// Asks for what one run takes. DVI (room for 256 bytes) is the proposed file, a Unix path, and receives the
// chosen one; OUT (room for 257) receives the name of the output file, empty for none; OPTIONS (room for 257)
// is proposed and receives what was typed. Returns 1 when it was confirmed; otherwise nothing but OUT, which
// is then empty, has changed.
int GetDvipsOptions(BoundedBuffer &dvi, BoundedBuffer &out, BoundedBuffer &options);
// Reads the stored option string, at most 511 bytes; empty when there is none.
void stored_dvips_options(BoundedBuffer &options);

// What the dialogs' controls do (dialogs/dialog.h).
int accept_dvips_run(DialogRef window);
void choose_dvi_file(DialogRef window, std::int16_t control);

} // namespace quillon

#endif
