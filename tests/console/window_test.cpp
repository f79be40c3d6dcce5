#include "console/window.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "console/output.h"
#include "front/front.h"
#include "headless/headless.h"
#include "settings/settings.h"
#include "state/job_state.h"
#include "support/temporary_home.h"
#include "support/whole_text.h"
#include "toolbox/files.h"

namespace quillon::test {

namespace {

// What the fake front was told, and what it answers.
struct Seen {
    std::vector<Rect> screens = {{0, 0, 900, 1440}};
    Rect bounds{};
    std::string title, font, proposed, prompt, chosen, printed;
    int windows_made = 0, shown = 0, hidden = 0, size = 0, margin = 0, selection = -1, attached = 0;
    int idles = 0, clicks = 0, updates = 0, forced = 0, focus = 0, active = -1, grown = 0;
    CursorShape cursor = watchCursor;
    int no_window = 0;
} seen;

char window_identity;
WindowRef const the_window = reinterpret_cast<WindowRef>(&window_identity);

WindowRef fake_new_window(const Rect *bounds, const char *title) {
    if (seen.no_window)
        return nullptr;
    seen.bounds = *bounds;
    seen.title = title;
    ++seen.windows_made;
    return the_window;
}

int fake_screens(Rect *rects, int room) {
    int count = 0;
    for (const Rect &rect : seen.screens)
        if (count < room)
            rects[count++] = rect;
    return count;
}

int fake_navigate(const NavRequest *request, BoundedBuffer &path) {
    seen.prompt = request->prompt;
    seen.proposed = request->start_name ? request->start_name : "";
    return seen.chosen.empty() ? 0 : path.copy(seen.chosen);
}

void fake_focus(int focus, int active) {
    if (focus >= 0)
        seen.focus = focus;
    if (active >= 0)
        seen.active = active;
}

Front make_fake_front() {
    Front fake = headless_front;
    fake.new_window = fake_new_window;
    fake.show_window = [](WindowRef, int show) { ++(show ? seen.shown : seen.hidden); };
    fake.front_window = [] { return the_window; };
    fake.window_bounds = [](WindowRef, Rect *bounds) { *bounds = seen.bounds; };
    fake.grow_window = [](WindowRef, Point) { ++seen.grown; };
    fake.screens = fake_screens;
    fake.set_cursor = [](CursorShape shape) { seen.cursor = shape; };
    fake.navigate = fake_navigate;
    fake.text_attach = [](TextStore *store, WindowRef) { seen.attached += store ? 1 : -1; };
    fake.text_font = [](const char *family, int size) {
        seen.font = family;
        seen.size = size;
    };
    fake.font_installed = [](const char *family) { return std::string(family) == "Courier" ? 1 : 0; };
    fake.text_appended = [](const void *data, std::size_t size) {
        seen.printed.append(static_cast<const char *>(data), size);
    };
    fake.text_update = [](int force) { ++(force ? seen.forced : seen.updates); };
    fake.text_selection = [](int shown) { seen.selection = shown; };
    fake.text_focus = fake_focus;
    fake.text_idle = [] { ++seen.idles; };
    fake.text_click = [](const EventRecord *) { ++seen.clicks; };
    fake.text_margin = [](int margin) { seen.margin = margin; };
    return fake;
}

class ConsoleWindow : public testing::Test {
  protected:
    void SetUp() override {
        static const Front fake = make_fake_front();
        before_ = front;
        front = &fake;
        seen = {};
        savelogname.clear();
        get_text = 0;
    }
    void TearDown() override {
        Finalize();
        theConsole = nullptr;
        front = before_;
    }

    void open_with(const std::string &preferences) {
        home_.preferences(preferences);
        theConsole = SetUpTextWindow("Quillon", 1);
    }

    const TemporaryHome home_;

  private:
    const Front *before_ = nullptr;
};

void expect_bounds(const Rect &bounds, int top, int left, int bottom, int right) {
    EXPECT_EQ(bounds.top, top);
    EXPECT_EQ(bounds.left, left);
    EXPECT_EQ(bounds.bottom, bottom);
    EXPECT_EQ(bounds.right, right);
}

void expect_default(const Rect &bounds) {
    expect_bounds(bounds, 45, 10, 300, 600);
}

EventRecord click_at(int v, int h) {
    return {mouseDown, 0, 0, {static_cast<std::int16_t>(v), static_cast<std::int16_t>(h)}, 0, 0};
}

} // namespace

TEST_F(ConsoleWindow, RestoresARectangleThatAScreenContains) {
    open_with("TEXWINDOW=50 20 400 500\n");
    expect_bounds(seen.bounds, 50, 20, 400, 500);
    EXPECT_EQ(theConsole, the_window);
    EXPECT_EQ(seen.title, "Quillon");
    EXPECT_EQ(seen.margin, 5);
    EXPECT_EQ(seen.selection, 0);
    EXPECT_EQ(seen.shown, 1);
}

TEST_F(ConsoleWindow, RectangleOffEveryScreenFallsBackToTheDefault) {
    open_with("TEXWINDOW=5000 20 5400 500\n");
    expect_default(seen.bounds);
}

TEST_F(ConsoleWindow, RectangleOnASecondScreenIsKept) {
    seen.screens.push_back({0, 1440, 900, 2880});
    open_with("TEXWINDOW=100 1500 400 2000\n");
    expect_bounds(seen.bounds, 100, 1500, 400, 2000);
}

TEST_F(ConsoleWindow, TitleBarUnderTheMenuBarOfTheMainScreenIsOffScreen) {
    open_with("TEXWINDOW=20 20 400 500\n"); // the strip is 0 to 20: the main screen's menu bar
    expect_default(seen.bounds);
}

TEST_F(ConsoleWindow, TitleBarAtTheTopOfASecondScreenIsOnScreen) {
    seen.screens.push_back({0, 1440, 900, 2880});
    open_with("TEXWINDOW=20 1500 400 2000\n");
    expect_bounds(seen.bounds, 20, 1500, 400, 2000);
}

TEST_F(ConsoleWindow, ThreeNumbersFallBackToTheDefault) {
    open_with("TEXWINDOW=50 20 400\n");
    expect_default(seen.bounds);
}

TEST_F(ConsoleWindow, MissingOrMalformedRectangleFallsBackToTheDefault) {
    open_with("TEXWINDOW=left top\n");
    expect_default(seen.bounds);
    Finalize();
    open_with("");
    expect_default(seen.bounds);
}

TEST_F(ConsoleWindow, NoWindowGivesNull) {
    seen.no_window = 1;
    open_with("");
    EXPECT_EQ(theConsole, nullptr);
}

TEST_F(ConsoleWindow, SecondTextObjectGivesNullAndLeavesTheFirst) {
    open_with("");
    TXNSetData(text, "kept", 4);
    EXPECT_EQ(SetUpTextWindow("Quillon", 0), nullptr);
    EXPECT_EQ(whole_text(text), "kept");
}

TEST_F(ConsoleWindow, UninstalledFontGivesMonacoAndUnreadableSizeTen) {
    open_with("FONTNAME=No Such Font\nFONTSIZE=abc\n");
    EXPECT_EQ(seen.font, "Monaco");
    EXPECT_EQ(seen.size, 10);
}

TEST_F(ConsoleWindow, InstalledFontAndSizeApply) {
    open_with("FONTNAME=Courier\nFONTSIZE=12pt\n");
    EXPECT_EQ(seen.font, "Courier");
    EXPECT_EQ(seen.size, 12);
}

TEST_F(ConsoleWindow, SystemFontsOwnNameIsKeptInEitherCase) {
    open_with("FONTNAME=lucida grande\n");
    EXPECT_EQ(seen.font, "lucida grande");
}

TEST_F(ConsoleWindow, MissingFontSettingsGiveMonacoAtTen) {
    open_with("");
    EXPECT_EQ(seen.font, "Monaco");
    EXPECT_EQ(seen.size, 10);
}

TEST_F(ConsoleWindow, ClearKeepsTheWindowAndAppliesTheFontAgain) {
    open_with("TEXWINDOW=50 20 400 500\nFONTNAME=Courier\nFONTSIZE=14\n");
    TXNSetData(text, "abc\r", 4);
    seen.font.clear();
    seen.bounds = {60, 30, 410, 510}; // moved by the person since
    ClearTextWindow();
    EXPECT_EQ(seen.windows_made, 1);
    EXPECT_EQ(seen.attached, 1);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(whole_text(text), "");
    expect_bounds(seen.bounds, 60, 30, 410, 510);
    EXPECT_EQ(seen.font, "Courier");
    EXPECT_EQ(seen.size, 14);
    EXPECT_STREQ(get_str_resource("TEXWINDOW"), "60 30 410 510");
}

TEST_F(ConsoleWindow, CleanUpStoresTopLeftBottomRight) {
    open_with("");
    seen.bounds = {-4, 11, 333, 444};
    TextCleanUp();
    EXPECT_STREQ(get_str_resource("TEXWINDOW"), "-4 11 333 444");
}

TEST_F(ConsoleWindow, SecondSaveOffersTheNameChosenTheFirstTime) {
    open_with("");
    TXNSetData(text, "one\rtwo\r", 8);
    seen.chosen = home_.path("work/my notes.txt");
    SaveConsole();
    EXPECT_EQ(seen.prompt, "Save console output as");
    EXPECT_EQ(seen.proposed, "console.log");
    EXPECT_EQ(home_.read("work/my notes.txt"), "one\rtwo\r");
    EXPECT_EQ(savelogname.view(), home_.mac("work/my notes.txt"));
    SaveConsole();
    EXPECT_EQ(seen.proposed, "my notes.txt");
}

TEST_F(ConsoleWindow, SaveOverALongerFileLeavesOnlyTheText) {
    open_with("");
    TXNSetData(text, "short\r", 6);
    seen.chosen = home_.file("work/console.log", std::string(5000, 'x'));
    SaveConsole();
    EXPECT_EQ(home_.read("work/console.log"), "short\r");
}

TEST_F(ConsoleWindow, SaveStampsTextWithTheEditorsCreator) {
    open_with("");
    editor = nullptr;
    seen.chosen = home_.path("work/stamped.txt");
    SaveConsole();
    FSSpec spec;
    FInfo info{};
    ASSERT_EQ(FSPathMakeSpec(seen.chosen.c_str(), &spec), noErr);
    ASSERT_EQ(FSpGetFInfo(&spec, &info), noErr);
    EXPECT_EQ(info.fdType, four("TEXT"));
    EXPECT_EQ(info.fdCreator, four("ttxt"));
}

TEST_F(ConsoleWindow, CancelledSaveChangesNothing) {
    open_with("");
    SaveConsole();
    EXPECT_TRUE(savelogname.empty());
    EXPECT_EQ(whole_text(text), "");
}

TEST_F(ConsoleWindow, FileThatCannotBeOpenedIsSaid) {
    open_with("");
    seen.chosen = home_.folder("work/a folder");
    SaveConsole();
    EXPECT_EQ(whole_text(text), "can't open data fork\r");
}

TEST_F(ConsoleWindow, ClicksInTheTextAreIgnored) {
    open_with("TEXWINDOW=50 20 450 520\n"); // 400 high, 500 wide
    for (const EventRecord &event : {click_at(0, 0), click_at(200, 200), click_at(384, 484)})
        DoTextContent(&event);
    EXPECT_EQ(seen.clicks, 0);
}

TEST_F(ConsoleWindow, ClicksInTheOuterFifteenPixelsReachTheEngine) {
    open_with("TEXWINDOW=50 20 450 520\n");
    for (const EventRecord &event : {click_at(200, 485), click_at(385, 200), click_at(399, 499)})
        DoTextContent(&event);
    EXPECT_EQ(seen.clicks, 3);
}

TEST_F(ConsoleWindow, IdlesOnlyWhileInputIsPending) {
    open_with("");
    TextIdle();
    EXPECT_EQ(seen.idles, 0);
    get_text = 1;
    TextIdle();
    EXPECT_EQ(seen.idles, 1);
}

TEST_F(ConsoleWindow, CursorIsTheTextEnginesOnlyWhileInputIsPending) {
    open_with("");
    AdjustCursor();
    EXPECT_EQ(seen.cursor, arrowCursor);
    get_text = 1;
    AdjustCursor();
    EXPECT_EQ(seen.cursor, iBeamCursor);
}

TEST_F(ConsoleWindow, EventsForAnotherWindowAreLeftAlone) {
    open_with("");
    char other;
    WindowRef const another = reinterpret_cast<WindowRef>(&other);
    seen.focus = 0;
    Text_Activate(another, 1);
    Text_Update(another);
    CloseTextWindow(another);
    EXPECT_EQ(seen.focus + seen.updates + seen.hidden, 0);
    Text_Activate(theConsole, 1);
    Text_Update(theConsole);
    CloseTextWindow(theConsole);
    EXPECT_EQ(seen.focus, 1);
    EXPECT_EQ(seen.active, 1);
    EXPECT_EQ(seen.updates, 1);
    EXPECT_EQ(seen.hidden, 1);
    EXPECT_EQ(seen.attached, 1); // hidden, never disposed of
}

TEST_F(ConsoleWindow, ForcedUpdateAndGrowReachTheEngine) {
    open_with("");
    ForceTextUpdate();
    const EventRecord event = click_at(1, 1);
    GrowTextWindow(&event);
    EXPECT_EQ(seen.forced, 1);
    EXPECT_EQ(seen.grown, 1);
}

TEST_F(ConsoleWindow, TypedKeysReachTheTextOnlyWhileTheSelectionShows) {
    open_with("");
    const auto type = [](std::uint32_t character, std::uint16_t modifiers = 0) {
        const EventRecord event = {keyDown, character, 0, {0, 0}, modifiers, 0};
        TXNKeyDown(text, &event);
    };
    type('x');
    EXPECT_EQ(whole_text(text), "");
    TXNShowSelection(text, 1);
    for (const std::uint32_t byte : {0x61u, 0xC3u, 0xA9u, 0x62u})
        type(byte);
    type('k', cmdKey);
    type(27);
    EXPECT_EQ(whole_text(text), "a\xC3\xA9"
                                "b");
    type(8);
    type(127); // both bytes of the character
    EXPECT_EQ(whole_text(text), "a");
    type(13);
    std::uint32_t lines = 0;
    TXNGetLineCount(text, &lines);
    EXPECT_EQ(lines, 1u);
}

TEST_F(ConsoleWindow, InsertionPointIsAlwaysAtTheEnd) {
    open_with("");
    TXNSetData(text, "abc", 3);
    std::size_t start = 0, end = 0;
    TXNGetSelection(text, &start, &end);
    EXPECT_EQ(start, 3u);
    EXPECT_EQ(end, 3u);
}

} // namespace quillon::test
