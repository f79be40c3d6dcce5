// The text engine: it keeps the text in a text store and leaves showing it to the front.
#include "toolbox/text_engine.h"

#include "front/front.h"
#include "front/text_store.h"
#include "toolbox/files.h"

namespace quillon {

struct TextObject {
    TextStore store;
    WindowRef window;
    int shows_selection;
};

namespace {

constexpr unsigned char backspace = 8, erase = 127;

TextObject the_text;
int in_use = 0;
std::size_t text_limit = 0;

int is_continuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

// Takes the last character away, with all its bytes when it is a UTF-8 character.
void erase_character(TextStore &store) {
    for (int bytes = 0; bytes < 4 && store.size() > 0; ++bytes) {
        const unsigned char last = store.byte(store.size() - 1);
        store.erase_last();
        if (!is_continuation(last))
            return;
    }
}

} // namespace

TXNObject TXNNewObject(WindowRef window) {
    if (in_use || !window)
        return nullptr;
    in_use = 1;
    the_text.store.clear();
    the_text.window = window;
    the_text.shows_selection = 0;
    front->text_attach(&the_text.store, window);
    return &the_text;
}

void TXNDeleteObject(TXNObject text) {
    if (!text || !in_use)
        return;
    front->text_attach(nullptr, text->window);
    text->store.clear();
    in_use = 0;
}

void TXNSetMargins(TXNObject, int margin) {
    if (front->text_margin)
        front->text_margin(margin);
}

void TXNShowSelection(TXNObject text, int show) {
    text->shows_selection = show;
    front->text_selection(show);
}

void TXNSetTypeAttributes(TXNObject, const char *font, int size) {
    front->text_font(font, size);
}

int FontIsInstalled(const char *family) {
    return front->font_installed(family);
}

int GetFontFamily(int index, BoundedBuffer &family) {
    return front->font_family ? front->font_family(index, family) : 0;
}

OSErr TXNSetData(TXNObject text, const void *data, std::size_t size) {
    if (!text)
        return paramErr;
    text->store.append(data, size);
    // Cutting takes a copy, so it is done once for every half of the limit.
    if (text_limit > 0 && text->store.size() > text_limit + text_limit / 2)
        text->store.keep_last(text_limit);
    front->text_appended(data, size);
    return noErr;
}

void LimitText(std::size_t limit) {
    text_limit = limit;
}

std::size_t TXNGetData(TXNObject text, std::size_t start, std::size_t end, void *data, std::size_t room) {
    return text->store.copy(start, end, data, room);
}

void TXNClear(TXNObject text) {
    text->store.clear();
    front->text_update(1);
}

OSErr TXNGetLineCount(TXNObject text, std::uint32_t *lines) {
    if (!text)
        return paramErr;
    *lines = static_cast<std::uint32_t>(text->store.line_ends());
    return noErr;
}

// The insertion point always stays at the end of the text.
void TXNGetSelection(TXNObject text, std::size_t *start, std::size_t *end) {
    *start = *end = text->store.size();
}

OSErr TXNSave(TXNObject text, std::int16_t reference) {
    const std::size_t size = text->store.size();
    for (std::size_t offset = 0; offset < size;) {
        std::size_t count = 0;
        const char *const bytes = text->store.run(offset, size, &count);
        long written = static_cast<long>(count);
        const OSErr error = FSWrite(reference, &written, bytes);
        if (error != noErr)
            return error;
        offset += count;
    }
    return noErr;
}

void TXNUpdate(TXNObject text) {
    if (text)
        front->text_update(0);
}

void TXNForceUpdate(TXNObject text) {
    if (text)
        front->text_update(1);
}

void TXNFocus(TXNObject, int focus) {
    front->text_focus(focus, -1);
}

void TXNActivate(TXNObject, int active) {
    front->text_focus(-1, active);
}

void TXNIdle(TXNObject) {
    front->text_idle();
}

void TXNClick(TXNObject, const EventRecord *event) {
    front->text_click(event);
}

void TXNGrowWindow(TXNObject text, const EventRecord *event) {
    front->grow_window(text->window, event->where);
}

// The host's own title bar zooms the window.
void TXNZoomWindow(TXNObject, std::int16_t) {}

void TXNAdjustCursor(TXNObject) {
    front->set_cursor(iBeamCursor);
}

void TXNKeyDown(TXNObject text, const EventRecord *event) {
    if (!text || !text->shows_selection || (event->modifiers & cmdKey))
        return;
    const unsigned char character = static_cast<unsigned char>(event->message & 0xFF);
    if (character == backspace || character == erase) {
        erase_character(text->store);
    } else if (character >= ' ' || character == '\r' || character == '\t') {
        text->store.append(&character, 1);
        front->text_appended(&character, 1);
    }
    front->text_update(0);
}

} // namespace quillon
