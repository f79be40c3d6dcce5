// The manual of a package, as the distribution's texdoc finds it.
#ifndef QUILLON_DIALOGS_PACKAGE_MANUAL_H
#define QUILLON_DIALOGS_PACKAGE_MANUAL_H

#include "toolbox/dialogs.h"

namespace quillon {

// Asks for the name of a package and has texdoc open its manual, in the PDF viewer where one is chosen. What
// texdoc says, and that it is not installed, comes into the console.
void show_package_manual();

// What the dialog's OK checks (dialogs/dialog.h).
int accept_package(DialogRef window);

} // namespace quillon

#endif
