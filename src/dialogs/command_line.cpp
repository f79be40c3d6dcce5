#include "dialogs/command_line.h"

#include <cstdio>

#include "console/window.h"
#include "dialogs/dialog.h"
#include "files/choosers.h"
#include "files/paths.h"
#include "settings/settings.h"
#include "state/job_state.h"

namespace quillon {

BoundedString<256> unix_dir;

namespace {

enum : std::int16_t { command_text = 4, command_folder = 5, size_text = 3 };

DialogRef wait_sheet = nullptr;

// Shows the working folder in its HFS form, which ends with a colon.
void show_folder(DialogRef window) {
    BoundedString<1024> hfs_path;
    if (!convert_path(unix_dir.c_str(), hfs_path))
        hfs_path.clear();
    if (!hfs_path.view().ends_with(':'))
        hfs_path.append(":");
    show_path(window, command_folder, hfs_path.c_str());
}

// Sets unix_dir to the folder to begin with: that of the formats for a proposed command, else the last one
// used; the person's own where that is no folder.
void choose_first_folder(const char *proposal) {
    const char *const wanted = proposal ? format_folder.c_str() : get_str_resource("TEXDIR");
    FSSpec spec;
    if (wanted && *wanted && unix_dir.copy(wanted) && UnixPathToFolder(unix_dir.c_str(), &spec))
        return;
    std::int16_t volume = 0;
    std::int32_t directory = 0;
    if (FindFolder(four("cusr"), 0, &volume, &directory) != noErr ||
        !get_unixpath_by_dirid(volume, directory, unix_dir))
        unix_dir.clear();
}

} // namespace

int accept_command_line(DialogRef window) {
    BoundedString<257> command;
    GetControlText(window, command_text, command);
    if (command.empty())
        return refuse(window, command_text);
    return !unix_dir.empty();
}

void choose_command_folder(DialogRef window, std::int16_t control) {
    BoundedString<256> chosen;
    chosen.copy(unix_dir.view());
    if (control != control_choose || !get_working_folder(chosen, "Select a working folder"))
        return;
    unix_dir.copy(chosen.view());
    show_folder(window);
}

int GetCommandLine(const char *proposal, BoundedBuffer &folder) {
    BoundedString<257> command;
    choose_first_folder(proposal);
    const DialogRef window = open_dialog(dialog_command_line);
    show_folder(window);
    SetControlText(window, command_text, proposal ? proposal : "");
    SelectControlText(window, command_text);
    const int confirmed = run_dialog(window);
    if (confirmed && GetControlText(window, command_text, command)) {
        mycommand.copy(command.view());
        folder.copy(unix_dir.view());
    }
    DisposeWindow(window);
    return confirmed;
}

int accept_font_size(DialogRef window) {
    BoundedString<64> text;
    int size = 0;
    GetControlText(window, size_text, text);
    return std::sscanf(text.c_str(), "%d", &size) == 1 ? 1 : refuse(window, size_text);
}

void get_fontsize() {
    BoundedString<64> size;
    const char *const stored = get_str_resource("FONTSIZE");
    const DialogRef window = open_dialog(dialog_font_size);
    SetControlText(window, size_text, stored ? stored : "");
    SelectControlText(window, size_text);
    const int confirmed = run_dialog(window) && GetControlText(window, size_text, size);
    DisposeWindow(window);
    if (!confirmed)
        return;
    set_str_resource("FONTSIZE", size.c_str());
    SetFontAndSize();
}

void WaitForScript() {
    EndWait();
    wait_sheet = CreateWindowFromNib("wait");
    ShowSheetWindow(wait_sheet);
}

void EndWait() {
    HideSheetWindow(wait_sheet);
    DisposeWindow(wait_sheet);
    wait_sheet = nullptr;
}

} // namespace quillon
