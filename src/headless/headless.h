// The front without a display: it prints the console's text on standard output, and a script takes the place
// of the person.
#ifndef QUILLON_HEADLESS_HEADLESS_H
#define QUILLON_HEADLESS_HEADLESS_H

#include <cstdint>
#include <string>
#include <vector>

#include "front/front.h"

namespace quillon {

// The procedures of this front.
extern const Front headless_front;
// Sets the procedures of FRONT for windows of the interface file.
void set_dialog_procedures(Front &front);

// Opens the script at the POSIX path ("-": standard input), from which the steps come: 1, or 0 when it cannot
// be opened. When its first line is "background" and can be read at once, the shell starts behind the others.
int OpenScript(const char *path);
// Takes the next steps up to one that gives the shell something to do: 1, or 0 when there is no step now. At
// the end of the script the shell is asked to end.
int TakeScriptStep();
// Takes the next step when it is one that cancels (key .); to be called while a tool runs.
void TakeCancelStep();
// Takes the next step when it is "foreground", to be called while the shell waits to be in front. At the end
// of the script the shell is asked to end.
void TakeForegroundStep();
// The descriptor to wait on for more of the script; -1 when the script has ended or never makes one wait.
int ScriptDescriptor();

// Takes the first answer that the script queued for a chooser: 1 and the path, or CANCELLED 1 for a step
// without a path; 0 when none is queued.
int NextChoice(BoundedBuffer &path, int *cancelled);
// A step of the script for a window: "set N TEXT", "check N 0|1" or "press N".
struct DialogStep {
    enum Kind { set, check, press } kind;
    std::int16_t control;
    std::string text; // for set
    int value = 0;    // for check
};
// Takes the first answer that the script queued for the window of that name: 1 and its steps, or 0 when none
// is queued.
int NextDialogAnswer(const char *name, std::vector<DialogStep> *steps);
// Makes the shell start behind the other programs, without an event.
void StartInBackground();
// Sends the shell to the front (1) or behind the other programs (0), with the event that tells it.
void SetHeadlessFront(int in_front);

} // namespace quillon

#endif
