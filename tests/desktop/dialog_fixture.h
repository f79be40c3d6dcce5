// What the tests of the dialogs share: a front with the real windows, and what happened in them.
#ifndef QUILLON_TESTS_DESKTOP_DIALOG_FIXTURE_H
#define QUILLON_TESTS_DESKTOP_DIALOG_FIXTURE_H

#include <QApplication>
#include <QDialog>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <vector>

#include "desktop/dialogs.h"
#include "dialogs/dialog.h"
#include "front/dialogs.h"
#include "front/front.h"
#include "toolbox/dialogs.h"

namespace quillon::desktop {

// The window on screen, and a control of it.
inline QDialog *on_screen(const char *name) {
    for (QWidget *const widget : QApplication::topLevelWidgets())
        if (widget->property("windowName").toString() == QLatin1String(name))
            return qobject_cast<QDialog *>(widget);
    return nullptr;
}

template <class Widget = QWidget> Widget *control_of(const QWidget *window, int number) {
    for (Widget *const widget : window->findChildren<Widget *>())
        if (widget->property("controlID").toInt() == number)
            return widget;
    return nullptr;
}

// What happened in the windows of a test.
struct Seen {
    std::vector<int> hits;
    std::vector<Point> moves;
    std::function<void(DialogRef, int control)> on_hit;
};

inline Seen &seen() {
    static Seen instance;
    return instance;
}

inline int keep(DialogRef window, const DialogEvent *event) {
    if (event->event_class == four("mous") && event->kind == kEventMouseMoved) {
        seen().moves.push_back(event->where);
        return 1;
    }
    seen().hits.push_back(event->control);
    if (seen().on_hit)
        seen().on_hit(window, event->control);
    return 1;
}

// Every control but those in REFUSED closes the window.
inline void close_unless(std::set<int> refused) {
    seen().on_hit = [refused](DialogRef window, int control) {
        if (!refused.contains(control))
            QuitAppModalLoopForWindow(window);
    };
}

class Dialogs : public testing::Test {
  protected:
    void SetUp() override {
        seen() = {};
        close_unless({});
        before_ = front;
        own_.new_dialog = new_dialog;
        own_.dispose_dialog = dispose_dialog;
        own_.run_dialog = desktop::run_dialog;
        own_.end_dialog = end_dialog;
        own_.show_sheet = show_sheet;
        own_.set_control_text = set_control_text;
        own_.control_text = control_text;
        own_.set_control_value = set_control_value;
        own_.control_value = control_value;
        own_.select_control = select_control;
        own_.add_list_row = add_list_row;
        own_.control_bounds = control_bounds;
        own_.set_cursor = [](CursorShape) {};
        own_.beep = [] {};
        front = &own_;
    }
    void TearDown() override {
        DisposeWindow(window_);
        front = before_;
    }

    // Makes the window, of which there is one at a time, with a handler that keeps what happens.
    QDialog *make(const char *name) {
        DisposeWindow(window_);
        window_ = CreateWindowFromNib(name);
        InstallWindowEventHandler(window_, keep);
        return window_ ? on_screen(name) : nullptr;
    }
    // Serves the window, and does each of STEPS in it as long as it is open; then it is closed.
    void run(QDialog *dialog, const std::vector<std::function<void()>> &steps) {
        QTimer::singleShot(0, dialog, [&, dialog] {
            for (const auto &step : steps)
                if (dialog->isVisible())
                    step();
            closed_by_itself_ = !dialog->isVisible();
            if (!closed_by_itself_)
                QuitAppModalLoopForWindow(window_);
        });
        RunAppModalLoopForWindow(window_);
    }
    // Shows the window without serving it.
    static void show(QDialog *dialog) {
        dialog->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog));
    }
    std::string text(std::int16_t control) {
        BoundedString<512> text;
        return GetControlText(window_, control, text) ? text.c_str() : "(none)";
    }

    Front own_ = {};
    DialogRef window_ = nullptr;
    bool closed_by_itself_ = false;

  private:
    const Front *before_ = nullptr;
};

} // namespace quillon::desktop

#endif
