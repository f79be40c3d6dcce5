// These tests try, to the point, which remembered places of the console window count as on a screen.
#include <gtest/gtest.h>

#include "console/window.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"

namespace quillon {
namespace {

// Returns the top that the window gets for a remembered top, on a screen that is 900 points high.
int top_for(int remembered) {
    const test::TemporaryHome home;
    const test::RecordingFront recorded;
    static Front changed;
    static int top;
    home.preferences("TEXWINDOW=" + std::to_string(remembered) + " 20 2000 500\n");
    changed = *front;
    changed.screens = [](Rect *screens, int) {
        screens[0] = {0, 0, 900, 1440};
        return 1;
    };
    changed.new_window = [](const Rect *bounds, const char *) -> WindowRef {
        top = bounds->top;
        return nullptr;
    };
    const Front *const before = front;
    front = &changed;
    SetUpTextWindow("test", 1);
    front = before;
    return top;
}

TEST(WindowBounds, TheTitleBarIs20HighAndOneRowOfItMustBeSeen) {
    EXPECT_EQ(top_for(919), 919);
    EXPECT_EQ(top_for(920), 45);
}

TEST(WindowBounds, TheMenuBarIs20High) {
    EXPECT_EQ(top_for(21), 21);
    EXPECT_EQ(top_for(20), 45);
}

} // namespace
} // namespace quillon
