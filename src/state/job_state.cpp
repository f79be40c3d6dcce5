#include "state/job_state.h"

namespace quillon {

BoundedString<100> progname;
std::int16_t appvol = 0;
std::int32_t appdir = 0;
const char *home = nullptr;
BoundedString<1024> contentsFolder;
BoundedString<256> shortroot, prefsFolder, supportFolder, curr_dir, SYSTEMFONTPATH;

BoundedString<1024> texexe, etexexe, pdfexe, pdfeexe, lualatexexe, xelatexexe, biberexe, dvipreview, dvipsexe,
    bibexe, mkexe, mpostexe, dvipdfmexe, setup;

const char *viewpsexe = nullptr, *ps2pdfexe = nullptr, *editor = nullptr, *pdfview = nullptr;
OSType preview_creator = 0, ed_creator = four("ttxt"), default_creator = four("????");

BoundedString<256> fname, format_name, format_folder, dotexfile, mydvifile, mypdffile, mypsfile, mybibfile,
    current_dvifile, current_outputfile, lastdir, editfile;
BoundedString<1024> lastcommand, mycommand;
std::int32_t editlinenumber = 0, exit_status = 0;
std::uint8_t tex_error = 0, calleditor = 0;

std::uint8_t usePdfTeX = 0, useETeX = 0, doDebug = 0, use8bit = 0, useFullPaths = 0, doView = 0,
             addSpecials = 0, doRecord = 0, runUntilStable = 0, fastPreamble = 0, typesetOnSave = 0,
             magicComments = 0, parseFirstLine = 0, doAlias = 0;
std::int32_t dataBaseSearch = 0, mp_format_type = 0, space_char = 0;

std::uint8_t haveosx = 0, hasSys9 = 0, hasAqua = 0, inBackground = 0, notifying = 0, doQuit = 0, aeQuit = 0,
             at_exit = 0, forceQuit = 0, in_dvii = 0;
void *reserveMemory = nullptr;
std::uint16_t myMask = 0;
std::uint32_t sleepTime = 0;
std::int32_t shift_key_down = 0, option_key_down = 0;
CursorShape myArrow = arrowCursor, waitCursor = watchCursor, editCursor = iBeamCursor;
WindowRef theConsole = nullptr;

} // namespace quillon
