// The dialogs for the options of MakeIndex, bibtex8 and pdfTeX.
#ifndef QUILLON_DIALOGS_OPTIONS_H
#define QUILLON_DIALOGS_OPTIONS_H

#include "toolbox/bounded.h"
#include "toolbox/dialogs.h"

namespace quillon {

// Writes the options of a MakeIndex run that the settings store, each with a blank before it, into OUT.
void SetMakeIndexOptions(BoundedBuffer &out);
// Asks for a MakeIndex run. Receive: FOLDER, the Unix path of the first file's folder; FILES, the names of
// the files, each with a blank before it; OUTPUT and TRANSCRIPT, the names of two files, and STYLE, empty for
// none; OPTIONS as SetMakeIndexOptions, without the style. Returns 1 when it was confirmed with a file at
// least.
int GetMakeIndexOptions(BoundedBuffer &folder, BoundedBuffer &files, BoundedBuffer &output,
                        BoundedBuffer &style, BoundedBuffer &transcript, BoundedBuffer &options);
// Let the person edit the stored options of bibtex8 and of pdfTeX. Return 1 when they were confirmed.
int GetBibtex8OptionString();
int pdftex_options();

// What the dialogs' controls do (dialogs/dialog.h).
int accept_makeindex(DialogRef window);
void add_index_file(DialogRef window, std::int16_t control);
int accept_bibtex8(DialogRef window);
int accept_pdftex(DialogRef window);

} // namespace quillon

#endif
