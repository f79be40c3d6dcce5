// The shell opens a file at a line in the person's editor.
#ifndef QUILLON_VIEWERS_EDITOR_H
#define QUILLON_VIEWERS_EDITOR_H

namespace quillon {

// 1 when SetLineInEditorOSX runs a command that opens the file at the line in the editor, else 0.
int LineCommandFollows();
// Makes the editor, which has FILE (a Unix path) open, go to LINE, when the shell knows how to tell that
// editor. Returns 0 when an event cannot be made, else 1.
int SetLineInEditorOSX(const char *file, int line);
// Opens editfile in the editor and goes to LINE, on a system before haveosx. Returns 1; 0 when no editor is
// set or the document could not be sent to it.
int OpenEditor(int line);
// Has the editor at the Unix path EDITOR_PATH select LINE in its first text window, by a script. Returns 0
// always.
int callScript3(const char *editor_path, int line);

} // namespace quillon

#endif
