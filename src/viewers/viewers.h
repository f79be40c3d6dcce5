// Output viewers: opening a document in an application, and the View commands.
#ifndef QUILLON_VIEWERS_VIEWERS_H
#define QUILLON_VIEWERS_VIEWERS_H

namespace quillon {

// 0 when the command ran with exit status 0; 1 when not, or when no application is set. Unix paths; DOCUMENT
// may be null.
int OpenDocInOSX(const char *app, const char *document);
// 1 when the open-document event was sent.
int LaunchAndSendODOC(const char *app, const char *document, int bring_to_front);
void OpenDviFile(const char *dvi);
void AutoViewDviFile();
void ViewPS();
void ViewPdf();
// When VIEWER is no application: notifies, waits to be in front, asks with PROMPT and stores the choice under
// KEY. 0 when the person cancels.
int find_application(const char **viewer, const char *key, const char *prompt);

} // namespace quillon

#endif
