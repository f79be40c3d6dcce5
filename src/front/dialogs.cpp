#include "front/dialogs.h"

#include <cstring>

#include "front/front.h"

namespace quillon {

const DialogControl dialog_controls[] = {
    {"dvips options", 1, button_control},
    {"dvips options", 2, button_control},
    {"dvips options", 3, text_control},

    {"dvips run", 1, button_control},
    {"dvips run", 2, button_control},
    {"dvips run", 3, button_control},
    {"dvips run", 4, text_control},
    {"dvips run", 5, display_control},
    {"dvips run", 6, text_control},

    {"makeindex options", 1, button_control},
    {"makeindex options", 2, button_control},
    {"makeindex options", 3, button_control},
    {"makeindex options", 4, check_control},
    {"makeindex options", 5, check_control},
    {"makeindex options", 6, check_control},
    {"makeindex options", 7, check_control},
    {"makeindex options", 8, text_control},
    {"makeindex options", 9, text_control},
    {"makeindex options", 10, text_control},
    {"makeindex options", 11, text_control},
    {"makeindex options", 12, display_control},

    {"bibtex8 options", 1, button_control},
    {"bibtex8 options", 2, button_control},
    {"bibtex8 options", 3, text_control},
    {"bibtex8 options", 4, text_control},

    {"pdftex options", 1, button_control},
    {"pdftex options", 2, button_control},
    {"pdftex options", 4, text_control},
    {"pdftex options", 5, check_control},

    {"Set apps", 1, button_control},
    {"Set apps", 2, button_control},
    {"Set apps", 3, button_control},
    {"Set apps", 4, button_control},
    {"Set apps", 5, button_control},
    {"Set apps", 6, button_control},
    {"Set apps", 7, display_control},
    {"Set apps", 8, display_control},
    {"Set apps", 9, display_control},
    {"Set apps", 10, display_control},

    {"cmdkey", 1, button_control},
    {"cmdkey", 2, button_control},
    {"cmdkey", 3, text_control},

    {"command line", 1, button_control},
    {"command line", 2, button_control},
    {"command line", 3, button_control},
    {"command line", 4, text_control},
    {"command line", 5, display_control},

    {"font size", 1, button_control},
    {"font size", 2, button_control},
    {"font size", 3, text_control},

    {"package manual", 1, button_control},
    {"package manual", 2, button_control},
    {"package manual", 3, text_control},

    {"clean", 1, button_control},
    {"clean", 2, button_control},
    {"clean", 3, button_control},
    {"clean", 4, button_control},
    {"clean", 5, display_control},
    {"clean", 6, display_control},
    {"clean", 7, list_control},

    {"about box", 1, button_control},
    {"Quit", 1, button_control},
    {"ConfirmDelete", 1, button_control},
    {"ConfirmDelete", 2, button_control},
    {"LongName", 1, button_control},
    {"alert 900", 1, button_control},
    {"wait", 0, no_control},
};
const int dialog_control_count = sizeof dialog_controls / sizeof dialog_controls[0];

ControlKind kind_of_control(const char *window, std::int16_t control) {
    for (const DialogControl &row : dialog_controls)
        if (std::strcmp(row.window, window) == 0 && row.control == control)
            return row.kind;
    return no_control;
}

ControlKind kind_in(const Dialog *dialog, std::int16_t control) {
    if (control >= first_list_row && control < first_list_row + dialog->list_rows)
        return check_control;
    return kind_of_control(dialog->name, control);
}

int is_dialog(const char *window) {
    for (const DialogControl &row : dialog_controls)
        if (std::strcmp(row.window, window) == 0)
            return 1;
    return 0;
}

void hit_control(Dialog *dialog, std::int16_t control) {
    const DialogEvent event = {four("cntl"), kEventControlHit, control, {0, 0}};
    if (dialog->handler)
        dialog->handler(dialog, &event);
}

DialogRef CreateWindowFromNib(const char *name) {
    for (const DialogControl &row : dialog_controls) {
        if (std::strcmp(row.window, name) != 0)
            continue;
        Dialog *const dialog = front->new_dialog(row.window);
        if (dialog)
            dialog->name = row.window;
        return dialog;
    }
    return nullptr;
}

void DisposeWindow(DialogRef window) {
    if (window)
        front->dispose_dialog(window);
}

void SetWRefCon(DialogRef window, std::int32_t number) {
    if (window)
        window->number = number;
}

std::int32_t GetWRefCon(DialogRef window) {
    return window ? window->number : 0;
}

void InstallWindowEventHandler(DialogRef window, DialogHandler handler) {
    if (window)
        window->handler = handler;
}

void RunAppModalLoopForWindow(DialogRef window) {
    if (window)
        front->run_dialog(window);
}

void QuitAppModalLoopForWindow(DialogRef window) {
    if (window)
        front->end_dialog(window);
}

void ShowSheetWindow(DialogRef window) {
    if (window)
        front->show_sheet(window, 1);
}

void HideSheetWindow(DialogRef window) {
    if (window)
        front->show_sheet(window, 0);
}

// 1 when the window has a control of that number and of one of the two kinds.
static int has_control(DialogRef window, std::int16_t control, ControlKind one, ControlKind other) {
    if (!window)
        return 0;
    const ControlKind kind = kind_in(window, control);
    return kind == one || kind == other;
}

void SetControlText(DialogRef window, std::int16_t control, const char *text) {
    if (has_control(window, control, text_control, display_control))
        front->set_control_text(window, control, text, 0);
}

void SetShortenedText(DialogRef window, std::int16_t control, const char *text) {
    if (has_control(window, control, text_control, display_control))
        front->set_control_text(window, control, text, 1);
}

int GetControlText(DialogRef window, std::int16_t control, BoundedBuffer &text) {
    text.clear();
    return has_control(window, control, text_control, display_control) &&
           front->control_text(window, control, text);
}

void SetControlValue(DialogRef window, std::int16_t control, int value) {
    if (has_control(window, control, check_control, check_control))
        front->set_control_value(window, control, value);
}

int GetControlValue(DialogRef window, std::int16_t control) {
    return has_control(window, control, check_control, check_control) ? front->control_value(window, control)
                                                                      : 0;
}

int AddListRow(DialogRef window, std::int16_t list, const char *text, const char *remark, int ticked) {
    if (!has_control(window, list, list_control, list_control) || window->list_rows == most_list_rows)
        return 0;
    const auto row = static_cast<std::int16_t>(first_list_row + window->list_rows++);
    front->add_list_row(window, list, text, remark);
    front->set_control_value(window, row, ticked);
    return 1;
}

void SelectControlText(DialogRef window, std::int16_t control) {
    if (has_control(window, control, text_control, text_control))
        front->select_control(window, control);
}

int GetControlBounds(DialogRef window, std::int16_t control, Rect *bounds) {
    return window && kind_of_control(window->name, control) != no_control &&
           front->control_bounds(window, control, bounds);
}

} // namespace quillon
