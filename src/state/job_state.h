// The job state: plain globals that every job, menu and event handler reads and writes.
//
// Paths are Unix paths (slash-separated, volume first, blanks substituted) unless said otherwise. Flags are
// one byte, 1 on and 0 off.
#ifndef QUILLON_STATE_JOB_STATE_H
#define QUILLON_STATE_JOB_STATE_H

#include "toolbox/bounded.h"
#include "toolbox/types.h"
#include "toolbox/windows.h"

namespace quillon {

// Folders and identity.
extern BoundedString<100> progname;
extern std::int16_t appvol;
extern std::int32_t appdir;
extern const char *home; // the binaries folder; null until SetTilde
extern BoundedString<1024> contentsFolder;
extern BoundedString<256> shortroot, prefsFolder, supportFolder, curr_dir, SYSTEMFONTPATH;

// Tool applications.
extern BoundedString<1024> texexe, etexexe, pdfexe, pdfeexe, dvipreview, dvipsexe, bibexe, mkexe, mpostexe,
    dvipdfmexe, setup;

// Applications that the user chose: 256-byte strings from GetApp, or null.
extern const char *viewpsexe, *ps2pdfexe, *editor, *pdfview;
extern OSType preview_creator, ed_creator, default_creator;

// Current job.
extern BoundedString<256> fname, format_name, format_folder, dotexfile, mydvifile, mypdffile, mypsfile,
    mybibfile, current_dvifile, current_outputfile, lastdir, editfile;
extern BoundedString<1024> lastcommand, mycommand;
extern std::int32_t editlinenumber, exit_status;
extern std::uint8_t tex_error, calleditor;

// Options.
extern std::uint8_t usePdfTeX, useETeX, doDebug, use8bit, useFullPaths, doView, addSpecials, doRecord,
    parseFirstLine, doAlias;
extern std::int32_t dataBaseSearch, mp_format_type, space_char;

// System and run.
extern std::uint8_t haveosx, hasSys9, hasAqua, inBackground, notifying, doQuit, aeQuit, at_exit, forceQuit,
    in_dvii;
extern void *reserveMemory;
extern std::uint16_t myMask;
extern std::uint32_t sleepTime;
extern std::int32_t shift_key_down, option_key_down;
extern CursorShape myArrow, waitCursor, editCursor;
extern WindowRef theConsole;

} // namespace quillon

#endif
