#include <poll.h>

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "front/text_store.h"
#include "headless/headless.h"
#include "linux/events/loop.h"

namespace quillon {

struct Window {
    Rect bounds;
    int visible;
};

static Window console_window = {{0, 0, 0, 0}, 0};
static int made = 0;
static int in_front = 1;

// The bounds of the one screen that this front claims to have.
static constexpr Rect screen = {0, 0, 1080, 1920};

static void headless_sleep(int milliseconds) {
    std::fflush(stdout);
    const int script = ScriptDescriptor();
    if (script < 0) {
        LoopSleep(milliseconds);
        return;
    }
    pollfd sources[] = {{LoopDescriptor(), POLLIN, 0}, {script, POLLIN, 0}};
    poll(sources, 2, milliseconds);
    LoopDispatch();
}

void SetHeadlessFront(int front_now) {
    in_front = front_now;
    PostEvent(osEvt, suspendResumeMessage | (front_now ? resumeFlag : 0u), 0, {0, 0});
}

void StartInBackground() {
    in_front = 0;
}

static void headless_commands_admitted(int) {}

static int headless_is_front() {
    return in_front;
}

static void headless_bring_to_front(const char *) {
    if (!in_front)
        SetHeadlessFront(1);
}

static WindowRef headless_new_window(const Rect *bounds, const char *) {
    console_window = {*bounds, 0};
    made = 1;
    return &console_window;
}

static void headless_show_window(WindowRef window, int show) {
    window->visible = show;
}

static void headless_select_window(WindowRef) {}

static WindowRef headless_front_window() {
    return made && console_window.visible ? &console_window : nullptr;
}

static void headless_window_bounds(WindowRef window, Rect *bounds) {
    *bounds = window->bounds;
}

static void headless_no_point(WindowRef, Point) {}

static WindowPart headless_find_window(const EventRecord *, WindowRef *window) {
    *window = &console_window;
    return inContent;
}

static int headless_screens(Rect *screens, int room) {
    if (room > 0)
        screens[0] = screen;
    return 1;
}

static void headless_set_cursor(CursorShape) {}

static void headless_beep() {}

static void headless_notify(int) {}

static int headless_navigate(const NavRequest *request, BoundedBuffer &posix_path) {
    int cancelled = 0;
    std::fflush(stdout);
    if (NextChoice(posix_path, &cancelled))
        return !cancelled;
    std::fprintf(stderr, "quillon: chooser \"%s\": no answer was queued, cancelled\n", request->prompt);
    return 0;
}

static void headless_text_attach(TextStore *, WindowRef) {}

static void headless_text_font(const char *, int) {}

static int headless_font_installed(const char *) {
    return 0;
}

// A few families that stand for those of a desktop.
static int headless_font_family(int index, BoundedBuffer &family) {
    static const char *const families[] = {"DejaVu Sans Mono", "Liberation Mono", "Noto Sans Mono"};
    return index >= 0 && index < static_cast<int>(std::size(families)) && family.copy(families[index]);
}

// Prints a line end as a line feed and every other byte as it is.
static void headless_text_appended(const void *data, std::size_t size) {
    const char *place = static_cast<const char *>(data);
    const char *const end = place + size;
    while (place < end) {
        const char *const line_end = std::find(place, end, '\r');
        std::fwrite(place, 1, static_cast<std::size_t>(line_end - place), stdout);
        if (line_end == end)
            return;
        std::fputc('\n', stdout);
        place = line_end + 1;
    }
}

static void headless_copy_text() {}

static void headless_text_flag(int) {}

static void headless_text_focus(int, int) {}

static void headless_text_idle() {}

static void headless_text_click(const EventRecord *) {}

static Front make_front() {
    Front made_front = {};
    made_front.name = "headless";
    made_front.sleep = headless_sleep;
    made_front.idle = TakeScriptStep;
    made_front.tool_wait = TakeCancelStep;
    made_front.front_wait = TakeForegroundStep;
    made_front.commands_admitted = headless_commands_admitted;
    made_front.is_front = headless_is_front;
    made_front.bring_to_front = headless_bring_to_front;
    made_front.new_window = headless_new_window;
    made_front.show_window = headless_show_window;
    made_front.select_window = headless_select_window;
    made_front.front_window = headless_front_window;
    made_front.window_bounds = headless_window_bounds;
    made_front.drag_window = headless_no_point;
    made_front.grow_window = headless_no_point;
    made_front.find_window = headless_find_window;
    made_front.screens = headless_screens;
    made_front.set_cursor = headless_set_cursor;
    made_front.beep = headless_beep;
    made_front.notify = headless_notify;
    set_dialog_procedures(made_front);
    made_front.navigate = headless_navigate;
    made_front.text_attach = headless_text_attach;
    made_front.text_font = headless_text_font;
    made_front.font_installed = headless_font_installed;
    made_front.text_appended = headless_text_appended;
    made_front.text_update = headless_text_flag;
    made_front.text_selection = headless_text_flag;
    made_front.text_focus = headless_text_focus;
    made_front.text_idle = headless_text_idle;
    made_front.text_click = headless_text_click;
    made_front.copy_text = headless_copy_text;
    made_front.font_family = headless_font_family;
    return made_front;
}

const Front headless_front = make_front();

} // namespace quillon
