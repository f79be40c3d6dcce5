#include "core/commands.h"

#include <cstdio>

#include "console/output.h"
#include "console/window.h"
#include "dialogs/message_windows.h"
#include "files/signatures.h"
#include "files/streams.h"
#include "front/front.h"
#include "jobs/tex_runs.h"
#include "menus/formats.h"
#include "menus/menus.h"
#include "menus/recent_files.h"
#include "settings/settings.h"
#include "state/job_state.h"
#include "tools/processes.h"
#include "viewers/viewers.h"

namespace quillon {

void command_about(std::int16_t) {
    aboutApp();
}

void command_leave(std::int16_t) {
    // A quit event is handled even after a fatal error, when the File menu is locked.
    PostHighLevelEvent(four("aevt"), four("quit"), 0);
}

void command_typeset_chosen(std::int16_t) {
    if (usePdfTeX)
        DoPdfTeX(nullptr);
    else
        DoTeX(nullptr);
}

void command_typeset_current(std::int16_t) {
    if (usePdfTeX)
        DoMenuPdfTeX(0);
    else
        DoMenuTeX(0);
}

void command_repeat(std::int16_t) {
    if (usePdfTeX)
        DoMenuPdfTeX(1);
    else
        DoMenuTeX(1);
}

void command_view_dvi(std::int16_t) {
    OpenDviFile(mydvifile.c_str());
}

void command_view_ps(std::int16_t) {
    ViewPS();
}

void command_view_pdf(std::int16_t) {
    ViewPdf();
}

void command_save_console(std::int16_t) {
    SaveConsole();
}

void command_quit(std::int16_t) {
    SaveRecentItems();
    doQuit = 1;
}

void command_setpaths(std::int16_t) {
    if (IsApp(setup.c_str()))
        DoTransfer(setup.c_str());
    else
        ml_printf("I can't find setpaths. It should be in the binaries folder.\n");
}

void command_copy(std::int16_t) {
    front->copy_text();
}

void command_clear(std::int16_t) {
    ClearTextWindow();
}

// Switches FLAG and marks ITEM of the Options menu to match.
static void toggle(std::uint8_t &flag, std::int16_t item) {
    flag = !flag;
    CheckMenuItem(optionsMenu, item, flag);
}

void toggle_etex(std::int16_t item) {
    toggle(useETeX, item);
    SetFormatMenu();
    SetDefaultFormat();
}

void toggle_parse(std::int16_t item) {
    toggle(parseFirstLine, item);
}

void choose_font(std::int16_t item) {
    BoundedString<256> font;
    if (oldItem != 0)
        CheckMenuItem(fontMenu, static_cast<std::int16_t>(oldItem), 0);
    CheckMenuItem(fontMenu, item, 1);
    oldItem = item;
    GetMenuItemText(fontMenu, item, font);
    set_str_resource("FONTNAME", font.c_str());
}

static void typeset_recent(std::int16_t item) {
    const char *const path = RecentFile[item].c_str();
    std::FILE *const file = myfopen(path, "r");
    if (!file) {
        if (ConfirmDelete() == 1)
            DeleteRecentFile(item);
        return;
    }
    std::fclose(file);
    // The run moves the entry to the top of the table, so the path is copied first.
    BoundedString<256> chosen;
    chosen.copy(path);
    if (usePdfTeX)
        DoRecentPdfTeX(chosen.c_str());
    else
        DoRecentTeX(chosen.c_str());
}

void choose_recent(std::int16_t item) {
    const std::int16_t count = CountMenuItems(recentMenu);
    if (item < 1 || item > count)
        return;
    if (item == count)
        DeleteAllRecentItems();
    else if (item == count - 1)
        ShowFullRecentPaths();
    else if (item < count - 2)
        typeset_recent(item);
}

int has_tex_file() {
    return !dotexfile.empty();
}

int has_last_command() {
    return !lastcommand.empty();
}

int has_bib_file() {
    return !mybibfile.empty();
}

int has_dvi_file() {
    return !mydvifile.empty();
}

int has_ps_file() {
    return !mypsfile.empty();
}

int has_pdf_file() {
    return !mypdffile.empty();
}

int etex_is_on() {
    return useETeX;
}

int parse_is_on() {
    return parseFirstLine;
}

} // namespace quillon
