// The front without a display: console text on standard output, a script in place of the person.
#ifndef QUILLON_HEADLESS_HEADLESS_H
#define QUILLON_HEADLESS_HEADLESS_H

#include "front/front.h"

namespace quillon {

extern const Front headless_front;

// The steps come from the file at PATH ("-": standard input). 0 when it cannot be opened. A script that
// begins with "background" starts the shell there, where that line can be read at once.
int OpenScript(const char *path);
// Takes the next steps up to one that gives the shell something to do: 1 when something was done, 0 when
// there is nothing to take now. The end of the script quits.
int TakeScriptStep();
// While a tool runs: takes the next step when it is one that cancels.
void TakeCancelStep();
// While the shell waits to be in front: takes the next step when it is the one that brings it there. At the
// end of the script the shell leaves.
void TakeForegroundStep();
// Readable when the script may hold more; -1 when it needs no waiting for.
int ScriptDescriptor();

// What the script queued ahead for the next window or chooser. 0 when there is nothing.
int NextChoice(BoundedBuffer &path, int *cancelled);
int NextDialogAnswer(const char *name, int *pressed);
// The shell starts behind the other programs.
void StartInBackground();
// background and foreground steps.
void SetHeadlessFront(int in_front);

} // namespace quillon

#endif
