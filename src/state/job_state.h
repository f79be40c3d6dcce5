// The job state is a set of plain globals that every job, menu and event handler reads and writes.
//
// Unless a comment says otherwise, paths are Unix paths: slash-separated, with the volume first and each
// blank replaced by the byte space_char. Flags are one byte, 1 for on and 0 for off.
#ifndef QUILLON_STATE_JOB_STATE_H
#define QUILLON_STATE_JOB_STATE_H

#include "toolbox/bounded.h"
#include "toolbox/types.h"
#include "toolbox/windows.h"

namespace quillon {

// The shell's own name and folders.
extern BoundedString<100> progname;
extern std::int16_t appvol;
extern std::int32_t appdir;
extern const char *home; // the binaries folder, which "~" stands for; null until SetTilde
extern BoundedString<1024> contentsFolder;
extern BoundedString<256> shortroot, prefsFolder, supportFolder, curr_dir, SYSTEMFONTPATH;

// The bundles of the tools, and setpaths.
extern BoundedString<1024> texexe, etexexe, pdfexe, pdfeexe, lualatexexe, xelatexexe, biberexe, dvipreview,
    dvipsexe, bibexe, mkexe, mpostexe, dvipdfmexe, setup;

// The applications that the person chose: 256-byte blocks from GetApp, or null; and creator signatures.
extern const char *viewpsexe, *ps2pdfexe, *editor, *pdfview;
extern OSType preview_creator, ed_creator, default_creator;

// The current job.
extern BoundedString<256> fname, format_name, format_folder, dotexfile, mydvifile, mypdffile, mypsfile,
    mybibfile, current_dvifile, current_outputfile, lastdir, editfile;
extern BoundedString<1024> lastcommand, mycommand;
extern std::int32_t editlinenumber, exit_status;
extern std::uint8_t tex_error, calleditor;

// Options, most of them filled from the settings.
extern std::uint8_t usePdfTeX, useETeX, doDebug, use8bit, useFullPaths, doView, addSpecials, doRecord,
    runUntilStable, fastPreamble, typesetOnSave, magicComments, parseFirstLine, doAlias;
extern std::int32_t dataBaseSearch, mp_format_type, space_char;

// The system, and the state of this run of the shell.
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
