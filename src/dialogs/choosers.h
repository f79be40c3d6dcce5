// File choosers: opening a file with extension filters, choosing a folder, saving a file, choosing an
// application.
#ifndef QUILLON_DIALOGS_CHOOSERS_H
#define QUILLON_DIALOGS_CHOOSERS_H

#include <cstdint>

#include "toolbox/bounded.h"
#include "toolbox/events.h"
#include "toolbox/files.h"
#include "toolbox/navigation.h"

namespace quillon {

// The filter state, shared by a chooser and its callbacks.
extern BoundedString<256> gExt, gExt1; // the extensions offered, each possibly empty
extern int selector;                   // 1 first extension, 2 second extension, 3 text files, 4 all files
extern OSType gSig, gSig1;             // applications accepted; '****' accepts any

// Readies the callbacks; once at start-up.
void CreateNavUPP();

// NAME in: a Unix path to start at, or empty; out: the chosen leaf, blanks substituted. EXT1 and EXT2 may be
// null. The four answer 1 when something was chosen.
int nav_get_file(BoundedBuffer &name, std::int16_t *vref, std::int32_t *dir_id, const char *ext1,
                 const char *ext2, int text_flag, const char *prompt);
// UNIX_PATH in: the folder to start at, or empty.
int nav_get_working_folder(BoundedBuffer &unix_path, const char *prompt);
// NAME in: the leaf proposed. The file need not exist.
int nav_put_file(BoundedBuffer &name, std::int16_t *vref, std::int32_t *dir_id, const char *prompt);
int nav_get_app(const char *prompt, BoundedBuffer &name, std::int16_t *vref, std::int32_t *dir_id, OSType sig,
                OSType sig1);

// Callbacks. PICKED is the filter record that the person picked, EVENT an event for one of the shell's
// windows; one of them is null.
void myEventProc(const NavMenuItem *picked, const EventRecord *event);
// 1 when the entry is shown; a null SPEC is an item that is no file.
int myFilterProc(const FSSpec *spec);
int myAppFilterProc(const FSSpec *spec);

} // namespace quillon

#endif
