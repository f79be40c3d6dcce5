// The text engine behind the console. The text is kept as bytes, grows at its end, and is laid out only where
// it is seen. One text object exists at a time.
#ifndef QUILLON_TOOLBOX_TEXT_ENGINE_H
#define QUILLON_TOOLBOX_TEXT_ENGINE_H

#include <cstddef>

#include "toolbox/bounded.h"
#include "toolbox/events.h"
#include "toolbox/types.h"
#include "toolbox/windows.h"

namespace quillon {

struct TextObject;
using TXNObject = TextObject *;

// Makes the empty text object of the window; null without a window or while another object exists.
TXNObject TXNNewObject(WindowRef window);
// Frees the text object; null is passed over.
void TXNDeleteObject(TXNObject text);
// Sets the distance of the text from the window's edges, in pixels.
void TXNSetMargins(TXNObject text, int margin);
// Shows (1) or hides (0) the caret; only while it is shown does the engine take typed characters.
void TXNShowSelection(TXNObject text, int show);
// Sets the font family and its size in points. A null or unknown family means the desktop's fixed-width font.
void TXNSetTypeAttributes(TXNObject text, const char *font, int size);
// 1 when the font family is installed, else 0.
int FontIsInstalled(const char *family);
// Copies the name of the installed font family number INDEX (from 0, ordered by name): 1, or 0 past the end.
int GetFontFamily(int index, BoundedBuffer &family);

// Appends SIZE bytes at the end of the text. paramErr for a null object.
OSErr TXNSetData(TXNObject text, const void *data, std::size_t size);
// Copies the text from START to END (byte offsets, END is not part of it), at most ROOM bytes, and gives the
// number of bytes copied. Offsets behind the end of the text count as the end.
std::size_t TXNGetData(TXNObject text, std::size_t start, std::size_t end, void *data, std::size_t room);
// Takes the whole text away and shows that.
void TXNClear(TXNObject text);
// Sets LINES to the number of line ends (byte 13) in the text. It grows when a line is completed, by output
// or by a typed Return. paramErr for a null object.
OSErr TXNGetLineCount(TXNObject text, std::uint32_t *lines);
// Sets START and END to the ends of the selection as byte offsets. The caret always stands at the end of the
// text, so both are the length of the text.
void TXNGetSelection(TXNObject text, std::size_t *start, std::size_t *end);
// Writes the whole text to an open file (FSpOpenDF), from its mark on; the first error of FSWrite.
OSErr TXNSave(TXNObject text, std::int16_t reference);

// Shows what was appended, at most once in a frame of the display however often it is called. A null object
// is passed over.
void TXNUpdate(TXNObject text);
// Shows the text anew at once.
void TXNForceUpdate(TXNObject text);
// Give the text the keyboard (FOCUS 1), and say whether its window is in front (ACTIVE 1 or 0). The toolkit
// takes the keyboard away by itself.
void TXNFocus(TXNObject text, int focus);
void TXNActivate(TXNObject text, int active);
// Blinks the caret; to be called often.
void TXNIdle(TXNObject text);
// Makes the text keep only about its last LIMIT bytes from now on, for a shell that nobody looks at; 0 keeps
// all.
void LimitText(std::size_t limit);
// Handles a mouse click in the text.
void TXNClick(TXNObject text, const EventRecord *event);
// Size and zoom the window with the mouse; a desktop whose title bar does that has done it already.
void TXNGrowWindow(TXNObject text, const EventRecord *event);
void TXNZoomWindow(TXNObject text, std::int16_t part);
// Gives the mouse pointer the shape that it has over text.
void TXNAdjustCursor(TXNObject text);
// Takes a typed key while the caret is shown: the character goes to the end of the text, and characters 8 and
// 127 erase the last one. Command keys and other control characters are passed over.
void TXNKeyDown(TXNObject text, const EventRecord *event);

} // namespace quillon

#endif
