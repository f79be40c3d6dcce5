// The console window: the one document window, an append-only text view.
#ifndef QUILLON_CONSOLE_WINDOW_H
#define QUILLON_CONSOLE_WINDOW_H

#include "toolbox/bounded.h"
#include "toolbox/events.h"
#include "toolbox/text_engine.h"
#include "toolbox/windows.h"

namespace quillon {

extern TXNObject text;
extern BoundedString<256> savelogname; // HFS path of the last file the console was saved to

WindowRef SetUpTextWindow(const char *title, int make_window);
int InitMLTE();
void Finalize();
void SetFontAndSize();
void ClearTextWindow();
void SaveConsole();
void SaveWindow(const Rect *bounds);
void TextCleanUp();
void Text_Activate(WindowRef window, int active);
void Text_Update(WindowRef window);
void CloseTextWindow(WindowRef window);
void ForceTextUpdate();
void GrowTextWindow(const EventRecord *event);
void ZoomTextWindow(std::int16_t part);
void TextIdle();
void AdjustCursor();
void DoTextContent(const EventRecord *event);
void TextKey();

} // namespace quillon

#endif
