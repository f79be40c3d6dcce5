#include "desktop/message_windows.h"

#include <QAbstractButton>
#include <QDialog>
#include <cstring>

#include "toolbox/events.h"
#include "ui_about_box.h"
#include "ui_alert_900.h"
#include "ui_confirm_delete.h"
#include "ui_long_name.h"
#include "ui_quit.h"

namespace quillon::desktop {

namespace {

enum { control_ok = 1, control_cancel = 2 };

template <class Form> void set_up(QDialog *dialog) {
    Form().setupUi(dialog);
}

struct MessageWindow {
    const char *name;
    void (*set_up)(QDialog *dialog);
};

constexpr MessageWindow message_windows[] = {
    {"about box", set_up<Ui::AboutBox>},          {"Quit", set_up<Ui::Quit>},
    {"ConfirmDelete", set_up<Ui::ConfirmDelete>}, {"LongName", set_up<Ui::LongName>},
    {"alert 900", set_up<Ui::Alert900>},
};

} // namespace

int run_message_window(const char *name, QWidget *parent) {
    for (const MessageWindow &window : message_windows) {
        if (std::strcmp(window.name, name) != 0)
            continue;
        if (LeaveRequested())
            return 0;
        QDialog dialog(parent && parent->isVisible() ? parent : nullptr);
        window.set_up(&dialog);
        for (QAbstractButton *const button : dialog.findChildren<QAbstractButton *>()) {
            const bool ok = button->property("controlID").toInt() == control_ok;
            QObject::connect(button, &QAbstractButton::clicked, &dialog,
                             ok ? &QDialog::accept : &QDialog::reject);
        }
        return dialog.exec() == QDialog::Accepted;
    }
    return 0;
}

} // namespace quillon::desktop
