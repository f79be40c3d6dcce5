// The window calls and the questions about the system that both fronts share.
#include "toolbox/windows.h"

#include <gtest/gtest.h>

#include "front/front.h"
#include "headless/headless.h"

namespace quillon {
namespace {

int notified;
int asked_where;

class WindowCalls : public ::testing::Test {
  protected:
    WindowCalls() : before_(front) {
        notified = -1;
        asked_where = 0;
        played_ = headless_front;
        played_.notify = [](int on) { notified = on; };
        played_.find_window = [](const EventRecord *, WindowRef *) {
            asked_where++;
            return inGrow;
        };
        front = &played_;
    }
    ~WindowCalls() override {
        SetSystemVersion(0x1000);
        front = before_;
    }

    const Front *const before_;
    Front played_;
};

TEST_F(WindowCalls, ARequestForAttentionIsMadeAndTakenBack) {
    NMRec request = {};
    EXPECT_EQ(NMInstall(&request), noErr);
    EXPECT_EQ(notified, 1);
    EXPECT_EQ(NMRemove(&request), noErr);
    EXPECT_EQ(notified, 0);
}

TEST_F(WindowCalls, AMouseDownWithAChoiceFellInTheMenuBar) {
    EventRecord event = {};
    event.what = mouseDown;
    event.message = 1;
    WindowRef window = reinterpret_cast<WindowRef>(&event);
    EXPECT_EQ(FindWindow(&event, &window), inMenuBar);
    EXPECT_EQ(window, nullptr);
    EXPECT_EQ(asked_where, 0);
    event.message = 0;
    EXPECT_EQ(FindWindow(&event, &window), inGrow);
    EXPECT_EQ(asked_where, 1);
}

TEST_F(WindowCalls, TheMenusLookNewOnTheNewSystemAlone) {
    std::int32_t answer = -1;
    SetSystemVersion(0x0FFF);
    EXPECT_EQ(Gestalt(gestaltMenuMgrAttr, &answer), noErr);
    EXPECT_EQ(answer, 0);
    SetSystemVersion(0x1000);
    EXPECT_EQ(Gestalt(gestaltMenuMgrAttr, &answer), noErr);
    EXPECT_EQ(answer, 2);
    EXPECT_EQ(Gestalt(gestaltSystemVersion, &answer), noErr);
    EXPECT_EQ(answer, 0x1000);
    EXPECT_EQ(Gestalt(four("????"), &answer), paramErr);
}

} // namespace
} // namespace quillon
