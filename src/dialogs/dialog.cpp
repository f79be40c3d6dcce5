#include "dialogs/dialog.h"

#include <cstring>

#include "dialogs/applications.h"
#include "dialogs/clean.h"
#include "dialogs/command_line.h"
#include "dialogs/dvips.h"
#include "dialogs/options.h"
#include "dialogs/package_manual.h"
#include "files/paths.h"
#include "state/job_state.h"
#include "toolbox/windows.h"

namespace quillon {

std::uint8_t cancelDialog = 0;

const DialogRow dialog_rows[] = {
    {dialog_font_size, "font size", {{3, 63}}, accept_font_size, nullptr},
    {dialog_command_line, "command line", {{4, 256}}, accept_command_line, choose_command_folder},
    {dialog_dvips_run, "dvips run", {{4, 256}, {6, 256}}, accept_dvips_run, choose_dvi_file},
    {dialog_makeindex,
     "makeindex options",
     {{8, 256}, {9, 256}, {10, 256}, {11, 256}},
     accept_makeindex,
     add_index_file},
    {dialog_applications, "Set apps", {}, nullptr, choose_tool},
    {dialog_dvips, "dvips options", {{3, 511}}, nullptr, nullptr},
    {dialog_bibtex8, "bibtex8 options", {{3, 256}, {4, 256}}, accept_bibtex8, nullptr},
    {dialog_pdftex, "pdftex options", {{4, 256}}, accept_pdftex, nullptr},
    {dialog_package, "package manual", {{3, 100}}, accept_package, nullptr},
    {dialog_clean, "clean", {}, accept_clean, tick_all_or_none},
    {dialog_command_key, "cmdkey", {{3, 500}}, nullptr, nullptr},
};
const int dialog_row_count = sizeof dialog_rows / sizeof dialog_rows[0];

static const DialogRow *find_row(std::int32_t number) {
    for (const DialogRow &row : dialog_rows)
        if (row.number == number)
            return &row;
    return nullptr;
}

DialogRef open_dialog(DialogNumber number) {
    const DialogRow *const row = find_row(number);
    const DialogRef window = row ? CreateWindowFromNib(row->window) : nullptr;
    SetWRefCon(window, number);
    InstallWindowEventHandler(window, dialogEventHandler);
    cancelDialog = 0;
    return window;
}

int run_dialog(DialogRef window) {
    if (!window)
        return 0;
    RunAppModalLoopForWindow(window);
    SetCursor(myArrow);
    return !cancelDialog;
}

int run_message(const char *name) {
    const DialogRef window = CreateWindowFromNib(name);
    InstallWindowEventHandler(window, dialogEventHandler);
    cancelDialog = 0;
    const int confirmed = run_dialog(window);
    DisposeWindow(window);
    return confirmed;
}

int refuse(DialogRef window, std::int16_t control) {
    SysBeep(1);
    SelectControlText(window, control);
    return 0;
}

void show_path(DialogRef window, std::int16_t control, const char *path) {
    BoundedString<2048> shown;
    shown.copy_cut(path);
    convert_to_space(shown.data());
    SetShortenedText(window, control, shown.c_str());
}

// 1 when every text field's entry fits; a field whose entry does not is selected.
static int entries_fit(DialogRef window, const DialogRow &row) {
    BoundedString<512> text;
    for (const TextField &field : row.fields)
        if (field.control != 0 &&
            (!GetControlText(window, field.control, text) || text.length() > field.limit))
            return refuse(window, field.control);
    return 1;
}

static int hit(DialogRef window, std::int16_t control) {
    const DialogRow *const row = find_row(GetWRefCon(window));
    if (control == control_ok) {
        if (row && (!entries_fit(window, *row) || (row->accepts && !row->accepts(window))))
            return 1;
        cancelDialog = 0;
        QuitAppModalLoopForWindow(window);
        return 1;
    }
    if (control == control_cancel) {
        // Kept on purpose: the command key is taken whether it is confirmed or not.
        if (GetWRefCon(window) != dialog_command_key)
            cancelDialog = 1;
        QuitAppModalLoopForWindow(window);
        return 1;
    }
    if (control < 3 || control > 6 || !row || !row->chooses)
        return 0;
    row->chooses(window, control);
    return 1;
}

int dialogEventHandler(DialogRef window, const DialogEvent *event) {
    if (event->event_class == four("mous") && event->kind == kEventMouseMoved) {
        ChangeEditCursor(window, event->where);
        return 1;
    }
    if (event->event_class == four("cntl") && event->kind == kEventControlHit)
        return hit(window, event->control);
    return 0;
}

void ChangeEditCursor(DialogRef window, Point point) {
    const DialogRow *const row = find_row(GetWRefCon(window));
    Rect bounds;
    for (int i = 0; row && i < most_text_fields; i++)
        if (row->fields[i].control != 0 && GetControlBounds(window, row->fields[i].control, &bounds) &&
            point.h >= bounds.left && point.h < bounds.right && point.v >= bounds.top &&
            point.v < bounds.bottom) {
            SetCursor(editCursor);
            return;
        }
    SetCursor(myArrow);
}

} // namespace quillon
