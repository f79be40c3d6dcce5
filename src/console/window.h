// The console window is the only document window. It shows the console's text, which grows at its end.
#ifndef QUILLON_CONSOLE_WINDOW_H
#define QUILLON_CONSOLE_WINDOW_H

#include "toolbox/bounded.h"
#include "toolbox/events.h"
#include "toolbox/text_engine.h"
#include "toolbox/windows.h"

namespace quillon {

extern TXNObject text;                 // the console's text; null while there is none
extern BoundedString<256> savelogname; // the HFS path of the last file that the console was saved to

// Makes a new empty text in the console window and shows it. With MAKE_WINDOW 1 it makes the window first,
// with TITLE, where it stood last. Returns the window, or null when the window or the text cannot be made.
WindowRef SetUpTextWindow(const char *title, int make_window);
// Sets the font and size that the console begins with. Returns 1.
int InitMLTE();
// Deletes the console's text.
void Finalize();
// Gives the text the font and size of the settings FONTNAME and FONTSIZE, or the preset ones ("Monaco", 10).
void SetFontAndSize();
// Empties the console, and stores where its window stands.
void ClearTextWindow();
// Asks for a file and writes the console's text into it. A failure is said in the console.
void SaveConsole();
// Stores BOUNDS, on the screen, as the place of the console window.
void SaveWindow(const Rect *bounds);
// Stores the place of the console window, when there is one.
void TextCleanUp();
// Take part in the events of WINDOW when it is the console window: show it active (1) or not, redraw it, hide
// it. Other windows, and null, are ignored.
void Text_Activate(WindowRef window, int active);
void Text_Update(WindowRef window);
void CloseTextWindow(WindowRef window);
// Redraws the whole text.
void ForceTextUpdate();
// Change the window's size as the person drags its corner (EVENT) or clicks its zoom box (PART, its window
// part).
void GrowTextWindow(const EventRecord *event);
void ZoomTextWindow(std::int16_t part);
// Lets the insertion point blink while the shell waits for a typed line. Runs when no event has come.
void TextIdle();
// Shows the cursor for the place under the mouse: that of the text while the shell waits for a typed line,
// else the arrow.
void AdjustCursor();
// Handles a click in the window. Only the scroll bars respond to it.
void DoTextContent(const EventRecord *event);
// Runs after a key was typed. It does nothing.
void TextKey();

} // namespace quillon

#endif
