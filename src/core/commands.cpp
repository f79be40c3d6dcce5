#include "core/commands.h"

#include <cstdio>

#include "console/output.h"
#include "console/window.h"
#include "core/command_table.h"
#include "dialogs/applications.h"
#include "dialogs/clean.h"
#include "dialogs/command_line.h"
#include "dialogs/dvips.h"
#include "dialogs/message_windows.h"
#include "dialogs/options.h"
#include "dialogs/package_manual.h"
#include "files/signatures.h"
#include "files/streams.h"
#include "front/front.h"
#include "jobs/forward_search.h"
#include "jobs/problem_steps.h"
#include "jobs/tex_runs.h"
#include "menus/formats.h"
#include "menus/menus.h"
#include "menus/recent_files.h"
#include "settings/settings.h"
#include "state/job_state.h"
#include "tools/processes.h"
#include "tools/tool_runs.h"
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

void command_bibtex(std::int16_t) {
    RunBibTeX(mybibfile.c_str());
}

void command_dvips(std::int16_t) {
    RunDvips(mydvifile.c_str());
}

void command_ps2pdf(std::int16_t) {
    RunPs2pdf(1);
}

void command_pdftex_options(std::int16_t) {
    pdftex_options();
}

void command_applications(std::int16_t) {
    SetTools();
}

void command_bibtex_options(std::int16_t) {
    GetBibtex8OptionString();
}

void command_dvips_options(std::int16_t) {
    GetAllDvipsOptions();
}

void command_font_size(std::int16_t) {
    get_fontsize();
}

void command_find_text(std::int16_t) {
    if (front->find_text)
        front->find_text();
}

void command_problems(std::int16_t) {
    if (front->show_problems)
        front->show_problems();
}

void command_next_problem(std::int16_t) {
    OpenNextProblem();
}

void command_previous_problem(std::int16_t) {
    OpenPreviousProblem();
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

void command_show(std::int16_t) {
    ShowInViewer();
}

void command_clean(std::int16_t) {
    CleanDocument();
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

void help(std::int16_t item) {
    ShowResourceText(item == help_manual ? "help_manual" : "help_messages");
}

void help_with_keys(std::int16_t) {
    BoundedString<256> text;
    ml_printf("\nKEYS\n\n");
    for (int i = 0; i < command_count; i++) {
        const Command &row = command_table[i];
        const MenuHandle menu = GetMenuHandle(row.menu);
        if (row.key && has_effect(row) && HasItsKey(menu, row.item))
            ml_printf("Ctrl+%c          %s > %s\n", row.key, GetMenuTitle(menu), row.title);
    }
    for (std::int16_t item = 1; item <= CountMenuItems(transferMenu); item++)
        if (HasItsKey(transferMenu, item) && GetMenuItemText(transferMenu, item, text))
            ml_printf("Ctrl+%c          Transfer > %s\n", GetItemCmd(transferMenu, item), text.c_str());
    ml_printf("Escape, Ctrl+.  cancel a run\n");
    if (front->find_text)
        ml_printf("F3, Shift+F3    the next and the previous hit in the console\n"
                  "Ctrl++, Ctrl+-  larger and smaller text in the console; Ctrl+0 as it was\n");
    ml_printf("\n");
}

void command_package_manual(std::int16_t) {
    show_package_manual();
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
