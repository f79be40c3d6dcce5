// The dialogs for a command line with its working folder, and for the console's font size; the sheet that
// says that a script runs.
#ifndef QUILLON_DIALOGS_COMMAND_LINE_H
#define QUILLON_DIALOGS_COMMAND_LINE_H

#include "toolbox/bounded.h"
#include "toolbox/dialogs.h"

namespace quillon {

// The working folder of the last "command line" dialog, a Unix path.
extern BoundedString<256> unix_dir;

// Asks for a command line and its working folder. PROPOSAL is the command to begin with, null for none. When
// the person confirms, mycommand holds the command and FOLDER (room for 256 bytes) its folder, a Unix path:
// 1, else 0.
int GetCommandLine(const char *proposal, BoundedBuffer &folder);
// Asks for the size of the console's font, stores it and uses it.
void get_fontsize();
// Show a sheet on the console window while a script runs, and take it away. No command uses them.
void WaitForScript();
void EndWait();

// What the dialogs' controls do (dialogs/dialog.h).
int accept_command_line(DialogRef window);
void choose_command_folder(DialogRef window, std::int16_t control);
int accept_font_size(DialogRef window);

} // namespace quillon

#endif
