// In these windows the person chooses a file to open or to save, a folder, or an application.
#ifndef QUILLON_DIALOGS_CHOOSERS_H
#define QUILLON_DIALOGS_CHOOSERS_H

#include <cstdint>

#include "toolbox/bounded.h"
#include "toolbox/events.h"
#include "toolbox/files.h"
#include "toolbox/navigation.h"

namespace quillon {

// The filter of the chooser that is open, which its callbacks read.
extern BoundedString<256> gExt, gExt1; // the two extensions offered; an empty one is not offered
extern int selector;                   // the filter picked: 1 gExt, 2 gExt1, 3 text files, 4 all files
extern OSType gSig, gSig1;             // the signatures accepted; '****' as gSig accepts any

// Prepares the callbacks that the choosers use. Runs once at start-up.
void CreateNavUPP();

// The four choosers show PROMPT and return 1 when something was chosen, 0 when the person cancels or the
// choice cannot be used, which the console says.
//
// nav_get_file asks for a file to open. NAME comes in as a Unix path to start at, or empty, and goes out as
// the chosen file's own name with blanks substituted; VREF and DIR_ID receive its volume and folder. EXT1 and
// EXT2 (each may be null) are extensions to filter by; TEXT_FLAG 1 offers a filter for text files.
int nav_get_file(BoundedBuffer &name, std::int16_t *vref, std::int32_t *dir_id, const char *ext1,
                 const char *ext2, int text_flag, const char *prompt);
// Asks for a folder. UNIX_PATH comes in as the Unix path of the folder to start at, or empty, and goes out as
// that of the chosen one.
int nav_get_working_folder(BoundedBuffer &unix_path, const char *prompt);
// Asks where to save. NAME comes in as the file name that is proposed; it and VREF and DIR_ID go out as for
// nav_get_file. The file need not exist.
int nav_put_file(BoundedBuffer &name, std::int16_t *vref, std::int32_t *dir_id, const char *prompt);
// Asks for an application whose signature is SIG or SIG1; '****' as SIG accepts any, and 0 as SIG1 none.
int nav_get_app(const char *prompt, BoundedBuffer &name, std::int16_t *vref, std::int32_t *dir_id, OSType sig,
                OSType sig1);

// The chooser's window calls these procedures. myEventProc sets `selector` from the filter that the person
// PICKED, or handles a redraw or activation EVENT of one of the shell's windows; the other parameter is null.
void myEventProc(const NavMenuItem *picked, const EventRecord *event);
// Return 1 when the file or application at SPEC is to be shown. Folders, and a null SPEC (no file), are
// always shown.
int myFilterProc(const FSSpec *spec);
int myAppFilterProc(const FSSpec *spec);

} // namespace quillon

#endif
