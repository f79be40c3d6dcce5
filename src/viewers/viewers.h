// The shell opens documents in other applications and carries out the View commands. Paths are Unix paths.
#ifndef QUILLON_VIEWERS_VIEWERS_H
#define QUILLON_VIEWERS_VIEWERS_H

namespace quillon {

// Opens DOCUMENT in the application APP through the command `open`; a null DOCUMENT only launches APP.
// Returns 0 when the command's exit status is 0; 1 when it is not, when APP is null or empty, or when the
// paths do not fit.
int OpenDocInOSX(const char *app, const char *document);
// Launches APP, brings it to the front when BRING_TO_FRONT is 1, and sends it an open-document event for
// DOCUMENT. Returns 1 when the event was sent, 0 when not, for which the console says the reason unless APP
// is null.
int LaunchAndSendODOC(const char *app, const char *document, int bring_to_front);
// Open a DVI file, and current_outputfile, in the DVI previewer. An empty path opens nothing. A failure is
// said in the console.
void OpenDviFile(const char *dvi);
void AutoViewDviFile();
// Open the current PostScript or PDF file in its viewer, which the person chooses when none is set.
void ViewPS();
void ViewPdf();
// Points APPLICATION to what the setting KEY names (a block from GetApp), and frees the block that it pointed
// to; null names none.
void take_application(const char **application, const char *key);
// Makes sure that VIEWER names an application. When it does not, waits until the shell is in front, asks the
// person with PROMPT, stores the choice under the setting KEY and points VIEWER to it (a block from GetApp).
// Returns 1, or 0 when the person cancels.
int find_application(const char **viewer, const char *key, const char *prompt);

} // namespace quillon

#endif
