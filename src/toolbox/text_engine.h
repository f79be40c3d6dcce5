// The text engine behind the console: text kept as bytes, appended at the end, laid out only where it is
// seen.
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

// Null on failure. One text object exists at a time.
TXNObject TXNNewObject(WindowRef window);
void TXNDeleteObject(TXNObject text);
void TXNSetMargins(TXNObject text, int margin);
void TXNShowSelection(TXNObject text, int show);
// FONT is a font family, null or an unknown family for the desktop's fixed-width font.
void TXNSetTypeAttributes(TXNObject text, const char *font, int size);
// 1 when the family is installed.
int FontIsInstalled(const char *family);
// The installed families, INDEX from 0, by name; 0 past the end.
int GetFontFamily(int index, BoundedBuffer &family);

// Appends SIZE bytes at the end of the text.
OSErr TXNSetData(TXNObject text, const void *data, std::size_t size);
// Copies at most ROOM bytes of the text from START to END (byte offsets); the number of bytes copied.
std::size_t TXNGetData(TXNObject text, std::size_t start, std::size_t end, void *data, std::size_t room);
std::size_t TXNDataSize(TXNObject text);
void TXNClear(TXNObject text);
// The number of line ends (byte 13): it grows when a line is completed, by output or by a typed Return.
OSErr TXNGetLineCount(TXNObject text, std::uint32_t *lines);
void TXNGetSelection(TXNObject text, std::size_t *start, std::size_t *end);
// Writes the whole text to the open data fork from its start. The first failing code.
OSErr TXNSave(TXNObject text, std::int16_t reference);

// Shows what was appended: at most once in a display's frame, however often it is called.
void TXNUpdate(TXNObject text);
void TXNForceUpdate(TXNObject text);
void TXNFocus(TXNObject text, int focus);
void TXNActivate(TXNObject text, int active);
void TXNIdle(TXNObject text);
void TXNClick(TXNObject text, const EventRecord *event);
void TXNGrowWindow(TXNObject text, const EventRecord *event);
void TXNZoomWindow(TXNObject text, std::int16_t part);
void TXNAdjustCursor(TXNObject text);
// The engine's own handling of a key: while the selection is shown the character goes to the end of the text
// (8 and 127 erase the last one).
void TXNKeyDown(TXNObject text, const EventRecord *event);

} // namespace quillon

#endif
