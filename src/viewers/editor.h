// The editor: opening a file and going to a line of it.
#ifndef QUILLON_VIEWERS_EDITOR_H
#define QUILLON_VIEWERS_EDITOR_H

namespace quillon {

// Sends the editor, which has FILE open, to LINE. 0 only when an event cannot be built.
int SetLineInEditorOSX(const char *file, int line);
// Earlier systems: opens editfile in the editor and goes to LINE. 1, or 0 on failure.
int OpenEditor(int line);

} // namespace quillon

#endif
