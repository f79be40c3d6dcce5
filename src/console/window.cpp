#include "console/window.h"

#include <cstdio>
#include <cstring>
#include <strings.h>

#include "console/output.h"
#include "files/choosers.h"
#include "files/paths.h"
#include "files/signatures.h"
#include "front/front.h"
#include "settings/settings.h"
#include "state/job_state.h"
#include "toolbox/files.h"

namespace quillon {

TXNObject text = nullptr;
BoundedString<256> savelogname;

namespace {

constexpr char fallback_font[] = "Monaco";
// The system font is known by its name, because its number is 0 like that of an unknown font.
constexpr char system_font[] = "Lucida Grande", earlier_system_font[] = "Chicago";
constexpr std::int16_t title_bar = 20, main_menu_bar = 20, scroll_bar = 15;
constexpr int margin = 5, default_size = 10, largest_screens = 16;
constexpr Rect default_bounds = {45, 10, 300, 600}; // top, left, bottom, right

BoundedString<256> consoleFontName;
std::int32_t consoleFontSize = 0;

int rects_meet(const Rect &a, const Rect &b) {
    return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

// Tells whether a part of the title bar of a window at BOUNDS is visible on a screen, below the main screen's
// menu bar.
int title_bar_is_visible(const Rect &bounds) {
    const Rect strip = {static_cast<std::int16_t>(bounds.top - title_bar), bounds.left, bounds.top,
                        bounds.right};
    Rect screens[largest_screens];
    const int count = GetScreens(screens, largest_screens);
    for (int i = 0; i < count; ++i) {
        if (i == 0)
            screens[0].top = static_cast<std::int16_t>(screens[0].top + main_menu_bar);
        if (rects_meet(strip, screens[i]))
            return 1;
    }
    return 0;
}

Rect remembered_bounds() {
    const char *const value = get_str_resource("TEXWINDOW");
    Rect bounds;
    if (value &&
        std::sscanf(value, "%hd %hd %hd %hd", &bounds.top, &bounds.left, &bounds.bottom, &bounds.right) ==
            4 &&
        title_bar_is_visible(bounds))
        return bounds;
    return default_bounds;
}

void choose_font() {
    const char *const name = get_str_resource("FONTNAME");
    if (!name) {
        consoleFontName.copy(fallback_font);
        return;
    }
    const char *const own_name = haveosx ? system_font : earlier_system_font;
    const int known = FontIsInstalled(name) || strcasecmp(name, own_name) == 0;
    if (!known || !consoleFontName.copy(name))
        consoleFontName.copy(fallback_font);
}

} // namespace

int InitMLTE() {
    consoleFontName.copy(haveosx ? system_font : fallback_font);
    consoleFontSize = haveosx ? 12 : 9;
    return 1;
}

void Finalize() {
    TXNDeleteObject(text);
    text = nullptr;
}

WindowRef SetUpTextWindow(const char *title, int make_window) {
    InitMLTE();
    WindowRef window = theConsole;
    if (make_window) {
        const Rect bounds = remembered_bounds();
        window = NewCWindow(&bounds, title);
    }
    if (!window)
        return nullptr;
    const TXNObject made = TXNNewObject(window);
    if (!made)
        return nullptr;
    text = made;
    TXNSetMargins(text, margin);
    SetFontAndSize();
    TXNShowSelection(text, 0);
    const char *const selectable = get_str_resource("CONSOLESELECT");
    if (front->text_selectable)
        front->text_selectable(selectable && selectable[0] == '1');
    ShowWindow(window);
    return window;
}

void SetFontAndSize() {
    choose_font();
    const char *const size = get_str_resource("FONTSIZE");
    if (!size || std::sscanf(size, "%d", &consoleFontSize) != 1)
        consoleFontSize = default_size;
    TXNSetTypeAttributes(text, consoleFontName.c_str(), consoleFontSize);
}

void SaveWindow(const Rect *bounds) {
    BoundedString<64> value;
    value.format("%d %d %d %d", bounds->top, bounds->left, bounds->bottom, bounds->right);
    set_str_resource("TEXWINDOW", value.c_str());
}

void TextCleanUp() {
    if (!theConsole)
        return;
    Rect bounds;
    GetWindowPortBounds(theConsole, &bounds);
    SaveWindow(&bounds);
}

void ClearTextWindow() {
    TXNClear(text);
    TextCleanUp();
    TXNDeleteObject(text);
    text = nullptr;
    SetUpTextWindow(nullptr, 0);
}

namespace {

// Writes the whole text into the file at SPEC, which is made when it does not exist.
void save_text(const FSSpec &spec) {
    FSpCreate(&spec, get_editor_info(editor ? editor : ""), four("TEXT"));
    std::int16_t reference = 0;
    if (FSpOpenDF(&spec, 'w', &reference) != noErr) {
        ml_printf("can't open data fork\n");
        return;
    }
    SetEOF(reference, 0);
    TXNSave(text, reference);
    FSClose(reference);
}

} // namespace

void SaveConsole() {
    const char *const colon = std::strrchr(savelogname.c_str(), ':');
    BoundedString<256> name;
    if (savelogname.empty())
        name.copy("console.log");
    else
        name.copy(colon ? colon + 1 : savelogname.c_str());

    std::int16_t volume = 0;
    std::int32_t folder = 0;
    if (!put_file(name, &volume, &folder, "Save console output as"))
        return;
    convert_to_space(name.data());
    BoundedString<1024> path;
    if (get_macpath_by_dirid(volume, folder, path) && path.append(":") && path.append(name.view()))
        savelogname.copy(path.view());
    FSSpec spec;
    const OSErr error = FSMakeFSSpec(volume, folder, name.c_str(), &spec);
    if (error != noErr && error != fnfErr) {
        ml_printf("can't open data fork\n");
        return;
    }
    save_text(spec);
}

void Text_Activate(WindowRef window, int active) {
    if (!window || window != theConsole)
        return;
    TXNFocus(text, 1);
    TXNActivate(text, active);
}

void Text_Update(WindowRef window) {
    if (window && window == theConsole)
        TXNUpdate(text);
}

void CloseTextWindow(WindowRef window) {
    if (window && window == theConsole)
        HideWindow(window);
}

void ForceTextUpdate() {
    TXNForceUpdate(text);
}

void GrowTextWindow(const EventRecord *event) {
    TXNGrowWindow(text, event);
}

void ZoomTextWindow(std::int16_t part) {
    TXNZoomWindow(text, part);
}

void TextIdle() {
    if (get_text)
        TXNIdle(text);
}

void AdjustCursor() {
    if (get_text && FrontWindow() == theConsole)
        TXNAdjustCursor(text);
    else
        SetCursor(arrowCursor);
}

void DoTextContent(const EventRecord *event) {
    Rect bounds;
    GetWindowPortBounds(theConsole, &bounds);
    const int width = bounds.right - bounds.left, height = bounds.bottom - bounds.top;
    const Point where = event->where;
    const int in_text =
        where.h >= 0 && where.v >= 0 && where.h < width - scroll_bar && where.v < height - scroll_bar;
    // Kept on purpose: a click in the text does nothing, so the insertion point stays at the end of the
    // output.
    if (!in_text)
        TXNClick(text, event);
}

void TextKey() {}

} // namespace quillon
