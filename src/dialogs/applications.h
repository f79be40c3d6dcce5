// The dialogs for the applications that the person uses, and for the command key of one.
#ifndef QUILLON_DIALOGS_APPLICATIONS_H
#define QUILLON_DIALOGS_APPLICATIONS_H

#include "toolbox/bounded.h"
#include "toolbox/dialogs.h"

namespace quillon {

// What was typed in the last "cmdkey" dialog, at most 500 bytes.
extern BoundedString<501> command_key_str;

// Lets the person choose the editor and the viewers; those that were chosen are stored and used from now on.
void SetTools();
// Asks for the command key of an application. What is in the field when the dialog closes goes into
// command_key_str.
void GetCmdKey();

// What the buttons of "Set apps" do (dialogs/dialog.h).
void choose_tool(DialogRef window, std::int16_t control);

} // namespace quillon

#endif
