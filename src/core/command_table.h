// Each menu command is one row of the command table, which the dispatcher, the menus and the tests read.
#ifndef QUILLON_CORE_COMMAND_TABLE_H
#define QUILLON_CORE_COMMAND_TABLE_H

#include <cstdint>

namespace quillon {

enum : std::int16_t {
    menu_apple = 128,
    menu_file = 129,
    menu_format = 130,
    menu_options = 131,
    menu_edit = 133,
    menu_build = 134,
    menu_tool = 135,
    menu_info = 137,
    menu_font = 139,
    menu_config = 140,
    menu_recent = 142,
    menu_mpformat = 143,
    menu_transfer = 200,
    menu_delete = 201,
    menu_change = 202,
    menu_help = 300,
};

// The item numbers of each menu, from 1. Menus that the shell fills while it runs have none here.
enum : std::int16_t {
    apple_about = 1,
    apple_quit = 3,

    file_typeset_chosen = 1,
    file_typeset = 2,
    file_recent = 3,
    file_repeat = 5,
    file_build = 6,
    file_bibtex = 8,
    file_view_dvi = 10,
    file_dvips = 11,
    file_view_ps = 13,
    file_ps2pdf = 14,
    file_view_pdf = 16,
    file_save_console = 18,
    file_quit = 20,
    file_clean = 22,
    file_show = 23,

    options_formats = 1,
    options_use_tex = 2,
    options_source_links = 3,
    options_record = 4,
    options_pdftex = 5,
    options_view = 7,
    options_debug = 8,
    options_setpaths = 9,
    options_applications = 10,
    options_bibtex = 12,
    options_dvips = 13,
    options_mpformat = 14,
    options_etex = 16,
    options_parse = 17,
    options_rerun = 18,
    options_fast_preamble = 19,
    options_watch = 20,

    edit_undo = 1,
    edit_cut = 3,
    edit_copy = 4,
    edit_paste = 5,
    edit_clear = 6,
    edit_font = 8,
    edit_font_size = 9,
    edit_eight_bit = 11,
    edit_info = 13,
    edit_config = 15,
    edit_find = 16,
    edit_problems = 17,
    edit_next_problem = 18,
    edit_previous_problem = 19,

    build_pdftex = 1,
    build_pdflatex = 2,
    build_execute = 3,

    tool_bibtex = 1,
    tool_dvips = 2,
    tool_makeindex = 3,
    tool_mpost = 4,
    tool_build_mpost = 5,
    tool_ps2pdf = 7,
    tool_dvipdfm = 9,

    info_dvips = 1,
    info_makeindex = 2,
    info_mpost = 3,
    info_pdftex = 4,

    config_dvips = 1,
    config_pdftex = 2,
    config_tex_cnf = 4,
    config_pdftex_cnf = 5,

    mpformat_plain = 1,
    mpformat_latex = 2,

    help_manual = 1,
    help_keys = 2,
    help_messages = 3,
    help_package = 4,
};

inline constexpr const char *separator_title = "(-";

struct MenuRow {
    std::int16_t id;
    const char *title;
    int in_bar; // 1 when the menu stands in the menu bar, 0 when it is a submenu
};

// One menu item. It opens a submenu, calls a procedure or changes a setting; an item that does none of these
// is shown disabled.
struct Command {
    std::int16_t menu;
    std::int16_t item; // 0 stands for every item of a menu that the shell fills while it runs
    const char *title; // null for item 0; separator_title for a separator
    char key;          // command key, 0 for none
    std::int16_t submenu = 0;
    void (*procedure)(std::int16_t item) = nullptr;
    int (*enabled)() = nullptr;    // 1 while the item may be chosen; null when it always may
    const char *setting = nullptr; // the key of a setting that the item changes
    int checked_at = 1; // the setting's value at which the item is checked; a choice is given this value
    int (*marked)() = nullptr; // for an item without a setting: 1 when it is checked at start-up
};

// The rows of the menus and of their items, and how many there are.
extern const MenuRow menu_rows[];
extern const int menu_row_count;
extern const Command command_table[];
extern const int command_count;

// Returns the row of an item, or the menu's row for item 0 when the item has no row of its own; null when
// there is neither. The row is part of the table.
const Command *find_command(std::int16_t menu, std::int16_t item);
// 1 when the row names a procedure or a setting, so that choosing it does something.
int has_effect(const Command &row);
// 1 when the row's item is to be checked now, from its setting's value or its `marked` procedure; 0 for rows
// that have neither.
int is_checked(const Command &row);
// Returns a sentence on why the row's item cannot be chosen now; null when it can, or when nothing is known.
const char *why_grey(const Command &row);
// Carries the row out: changes its setting, then calls its procedure with ITEM, the number of the item that
// the person chose. Does nothing for a row without effect.
void choose(const Command &row, std::int16_t item);

} // namespace quillon

#endif
