// What becomes of open windows when the shell leaves.
#include <QPushButton>
#include <cstdlib>

#include "desktop/choosers.h"
#include "desktop/dialog_fixture.h"
#include "desktop/event_pump.h"

namespace quillon::desktop {

namespace {

// The shell cannot take a request to leave back, so each of these ends its process.
class LeavingDialogs : public Dialogs {
  protected:
    void SetUp() override {
        Dialogs::SetUp();
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        close_unless({control_ok, control_cancel}); // the handler closes nothing
        seen().hits.clear();
    }
    [[noreturn]] static void end(bool right) { std::_Exit(right ? 7 : 1); }
};

TEST_F(LeavingDialogs, NoWindowIsShownOnceTheShellLeaves) {
    EXPECT_EXIT(
        {
            QDialog *const dialog = make("font size");
            RequestLeave();
            RunAppModalLoopForWindow(window_);
            end(seen().hits == std::vector<int>{control_cancel} && !dialog->isVisible());
        },
        testing::ExitedWithCode(7), "");
}

TEST_F(LeavingDialogs, AWindowIsCancelledWhenTheShellLeaves) {
    EXPECT_EXIT(
        {
            QDialog *const dialog = make("font size");
            QTimer::singleShot(0, dialog, post_leave);
            RunAppModalLoopForWindow(window_);
            end(seen().hits == std::vector<int>{control_cancel} && !dialog->isVisible());
        },
        testing::ExitedWithCode(7), "");
}

TEST_F(LeavingDialogs, AChooserGoesBeforeTheWindowThatOpenedIt) {
    EXPECT_EXIT(
        {
            QDialog *const dialog = make("Set apps");
            seen().on_hit = [](DialogRef, int control) {
                if (control == control_cancel)
                    return;
                NavRequest request = {};
                request.kind = navChooseApplication;
                BoundedString<256> path;
                QTimer::singleShot(0, qApp, post_leave);
                run_chooser(request, nullptr, path);
                seen().hits.push_back(100);
            };
            QTimer::singleShot(0, dialog, [dialog] { control_of<QPushButton>(dialog, 4)->click(); });
            RunAppModalLoopForWindow(window_);
            end(seen().hits == (std::vector<int>{4, control_cancel, 100}) && !dialog->isVisible());
        },
        testing::ExitedWithCode(7), "");
}

} // namespace

} // namespace quillon::desktop
