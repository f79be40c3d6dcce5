#include "core/command_table.h"

#include <cstring>

#include "core/commands.h"
#include "jobs/builds.h"
#include "jobs/forward_search.h"
#include "jobs/problem_steps.h"
#include "menus/formats.h"
#include "menus/tools.h"
#include "menus/transfer.h"
#include "settings/setting_table.h"
#include "state/job_state.h"
#include "toolbox/menus.h"

namespace quillon {

const MenuRow menu_rows[] = {
    {menu_apple, "Quillon", 1},       {menu_file, "File", 1},
    {menu_edit, "Edit", 1},           {menu_options, "Options", 1},
    {menu_tool, "Tools", 1},          {menu_transfer, "Transfer", 1},
    {menu_help, "Help", 1},           {menu_format, "Formats", 0},
    {menu_build, "Build Format", 0},  {menu_info, "Information", 0},
    {menu_font, "Font", 0},           {menu_config, "Configuration Files", 0},
    {menu_recent, "Recent Files", 0}, {menu_mpformat, "MetaPost Format", 0},
    {menu_delete, "Delete", 0},       {menu_change, "Change", 0},
};
const int menu_row_count = sizeof menu_rows / sizeof menu_rows[0];

static constexpr Command separator(std::int16_t menu, std::int16_t item) {
    return {menu, item, separator_title, 0};
}

static constexpr Command submenu(std::int16_t menu, std::int16_t item, const char *title,
                                 std::int16_t opened) {
    return {menu, item, title, 0, opened};
}

static constexpr Command action(std::int16_t menu, std::int16_t item, const char *title, char key,
                                void (*procedure)(std::int16_t), int (*enabled)() = nullptr) {
    return {menu, item, title, key, 0, procedure, enabled};
}

// Makes an item that switches a flag which the settings store.
static constexpr Command on_off(std::int16_t menu, std::int16_t item, const char *title, char key,
                                const char *setting, int checked_at = 1) {
    return {menu, item, title, key, 0, nullptr, nullptr, setting, checked_at};
}

// Makes an item that gives a stored setting one of its values.
static constexpr Command one_of(std::int16_t menu, std::int16_t item, const char *title, const char *setting,
                                int value) {
    return {menu, item, title, 0, 0, nullptr, nullptr, setting, value};
}

// Makes an item that switches a flag which lasts as long as the shell runs.
static constexpr Command unstored(std::int16_t menu, std::int16_t item, const char *title, char key,
                                  void (*procedure)(std::int16_t), int (*marked)()) {
    return {menu, item, title, key, 0, procedure, nullptr, nullptr, 1, marked};
}

// Makes the row for every item of a menu that the shell fills while it runs.
static constexpr Command any_item(std::int16_t menu, void (*procedure)(std::int16_t)) {
    return {menu, 0, nullptr, 0, 0, procedure};
}

// Makes an item that holds its place and does nothing.
static constexpr Command idle(std::int16_t menu, std::int16_t item, const char *title, char key) {
    return {menu, item, title, key};
}

const Command command_table[] = {
    action(menu_apple, apple_about, "About Quillon", 0, command_about),
    separator(menu_apple, 2),
    action(menu_apple, apple_quit, "Quit Quillon", 0, command_leave),

    action(menu_file, file_typeset_chosen, "Typeset File...", 'O', command_typeset_chosen),
    action(menu_file, file_typeset, "Typeset", 'T', command_typeset_current, has_tex_file),
    submenu(menu_file, file_recent, "Recent Files", menu_recent),
    separator(menu_file, 4),
    action(menu_file, file_repeat, "Repeat Last Command", 'R', command_repeat, has_last_command),
    submenu(menu_file, file_build, "Build Format", menu_build),
    separator(menu_file, 7),
    action(menu_file, file_bibtex, "bibtex", 0, command_bibtex, has_bib_file),
    separator(menu_file, 9),
    action(menu_file, file_view_dvi, "View", 'D', command_view_dvi, has_dvi_file),
    action(menu_file, file_dvips, "dvips", 0, command_dvips, has_dvi_file),
    separator(menu_file, 12),
    action(menu_file, file_view_ps, "View", 0, command_view_ps, has_ps_file),
    action(menu_file, file_ps2pdf, "ps2pdf", 0, command_ps2pdf, has_ps_file),
    separator(menu_file, 15),
    action(menu_file, file_view_pdf, "View", 'P', command_view_pdf, has_pdf_file),
    separator(menu_file, 17),
    action(menu_file, file_save_console, "Save Console As...", 'S', command_save_console),
    separator(menu_file, 19),
    action(menu_file, file_quit, "Quit", 'Q', command_quit),
    separator(menu_file, 21),
    action(menu_file, file_clean, "Clean...", 0, command_clean, has_tex_file),
    action(menu_file, file_show, "Show in Viewer", 'J', command_show, has_shown_output),

    any_item(menu_format, DoFormat),

    submenu(menu_options, options_formats, "Formats", menu_format),
    // Kept on purpose: the item is checked while pdfTeX is off.
    on_off(menu_options, options_use_tex, "Use TeX (DVI Output)", 0, "USEPDFTEX", 0),
    on_off(menu_options, options_source_links, "Add Source Links", 0, "ADDSPECIALS"),
    on_off(menu_options, options_record, "Record Files Used", 0, "DORECORD"),
    action(menu_options, options_pdftex, "pdfTeX Options...", 0, command_pdftex_options),
    separator(menu_options, 6),
    on_off(menu_options, options_view, "View Output Automatically", 0, "AUTOVIEW"),
    on_off(menu_options, options_debug, "Show Debug Output", 0, "DEBUG"),
    action(menu_options, options_setpaths, "Set Up Paths...", 0, command_setpaths),
    action(menu_options, options_applications, "Set Applications...", 0, command_applications),
    separator(menu_options, 11),
    action(menu_options, options_bibtex, "BibTeX8 Options...", 0, command_bibtex_options),
    action(menu_options, options_dvips, "dvips Options...", 0, command_dvips_options),
    submenu(menu_options, options_mpformat, "MetaPost Format", menu_mpformat),
    separator(menu_options, 15),
    unstored(menu_options, options_etex, "e-TeX Mode", 'E', toggle_etex, etex_is_on),
    unstored(menu_options, options_parse, "Parse First Line", 0, toggle_parse, parse_is_on),
    on_off(menu_options, options_rerun, "Run Until Stable", 0, "RERUN"),
    on_off(menu_options, options_fast_preamble, "Fast Preamble", 0, "SNAPSHOT"),
    on_off(menu_options, options_watch, "Typeset on Save", 0, "WATCH"),

    idle(menu_edit, edit_undo, "Undo", 'Z'),
    separator(menu_edit, 2),
    idle(menu_edit, edit_cut, "Cut", 'X'),
    action(menu_edit, edit_copy, "Copy", 'C', command_copy),
    idle(menu_edit, edit_paste, "Paste", 'V'),
    action(menu_edit, edit_clear, "Clear Console", 'K', command_clear),
    separator(menu_edit, 7),
    submenu(menu_edit, edit_font, "Font", menu_font),
    action(menu_edit, edit_font_size, "Font Size...", 0, command_font_size),
    separator(menu_edit, 10),
    on_off(menu_edit, edit_eight_bit, "8-bit Output", '8', "USE8BIT"),
    separator(menu_edit, 12),
    submenu(menu_edit, edit_info, "Information", menu_info),
    separator(menu_edit, 14),
    submenu(menu_edit, edit_config, "Configuration Files", menu_config),
    action(menu_edit, edit_find, "Find in Console...", 'F', command_find_text),
    action(menu_edit, edit_problems, "Problems", 'L', command_problems),
    action(menu_edit, edit_next_problem, "Next Problem", 'N', command_next_problem, has_problems),
    action(menu_edit, edit_previous_problem, "Previous Problem", 'U', command_previous_problem, has_problems),

    action(menu_build, build_pdftex, "pdfTeX Format...", 0, DoPDFBuildItem),
    action(menu_build, build_pdflatex, "pdfLaTeX Format...", 0, DoPDFBuildItem),
    action(menu_build, build_execute, "Execute...", 0, DoPDFBuildItem),

    action(menu_tool, tool_bibtex, "BibTeX...", 'B', DoTools),
    action(menu_tool, tool_dvips, "dvips...", 0, DoTools),
    action(menu_tool, tool_makeindex, "MakeIndex...", 'I', DoTools),
    action(menu_tool, tool_mpost, "MetaPost...", 'M', DoTools),
    action(menu_tool, tool_build_mpost, "Build MetaPost Format...", 0, DoTools),
    separator(menu_tool, 6),
    action(menu_tool, tool_ps2pdf, "ps2pdf...", 0, DoTools),
    separator(menu_tool, 8),
    action(menu_tool, tool_dvipdfm, "dvipdfm", 0, DoTools, has_dvi_file),

    action(menu_info, info_dvips, "dvips", 0, info),
    action(menu_info, info_makeindex, "MakeIndex", 0, info),
    action(menu_info, info_mpost, "MetaPost", 0, info),
    action(menu_info, info_pdftex, "pdfTeX", 0, info),

    any_item(menu_font, choose_font),

    action(menu_config, config_dvips, "config.ps", 0, OpenConfigFile),
    action(menu_config, config_pdftex, "pdftexconfig.tex", 0, OpenConfigFile),
    separator(menu_config, 3),
    action(menu_config, config_tex_cnf, "tex.cnf", 0, OpenConfigFile),
    action(menu_config, config_pdftex_cnf, "pdftex.cnf", 0, OpenConfigFile),

    any_item(menu_recent, choose_recent),

    one_of(menu_mpformat, mpformat_plain, "Plain TeX Labels", "MPTEXFORMAT", 1),
    one_of(menu_mpformat, mpformat_latex, "LaTeX Labels", "MPTEXFORMAT", 2),

    action(menu_help, help_manual, "Quillon Manual", 0, help),
    action(menu_help, help_keys, "Keys", 0, help_with_keys),
    action(menu_help, help_messages, "What the Messages Mean", 0, help),
    action(menu_help, help_package, "Manual of a Package...", 0, command_package_manual),

    any_item(menu_transfer, DoTransferItem),
    any_item(menu_delete, CutTransferItem),
    any_item(menu_change, ChangeTransferItem),
};
const int command_count = sizeof command_table / sizeof command_table[0];

const Command *find_command(std::int16_t menu, std::int16_t item) {
    const Command *any_item = nullptr;
    for (const Command &row : command_table) {
        if (row.menu != menu)
            continue;
        if (row.item == item && item != 0)
            return &row;
        if (row.item == 0)
            any_item = &row;
    }
    return any_item;
}

int has_effect(const Command &row) {
    return row.procedure || row.setting;
}

const char *why_grey(const Command &row) {
    static const struct {
        int (*rule)();
        const char *reason;
    } reasons[] = {
        {has_tex_file, "No document was typeset yet, or it has gone."},
        {has_last_command, "No command was run yet."},
        {has_bib_file, "There is no .aux file beside the current document."},
        {has_dvi_file, "There is no DVI file beside the current document."},
        {has_ps_file, "There is no PostScript file beside the current document."},
        {has_shown_output, "There is neither a PDF nor a DVI file beside the current document."},
        {has_problems, "The last run has no problems, or none of the kinds that are shown."},
        {has_pdf_file, "There is no PDF file beside the current document."},
    };
    if (forceQuit)
        return "After a serious error Quillon can only be quit.";
    if (!has_effect(row) && !row.submenu)
        return "The text of the console cannot be changed.";
    for (const auto &entry : reasons)
        if (row.enabled == entry.rule && !row.enabled())
            return entry.reason;
    return nullptr;
}

int is_checked(const Command &row) {
    if (row.setting)
        return setting_value(*find_setting(row.setting)) == row.checked_at;
    return row.marked && row.marked();
}

// Switches the row's flag, or gives the row's setting its value, and updates the marks of all items of that
// setting.
static void choose_setting(const Command &row) {
    const Setting &setting = *find_setting(row.setting);
    change_setting(setting, setting.kind == setting_flag ? !setting_value(setting) : row.checked_at);
    for (const Command &other : command_table)
        if (other.setting && std::strcmp(other.setting, row.setting) == 0)
            CheckMenuItem(GetMenuHandle(other.menu), other.item, is_checked(other));
}

void choose(const Command &row, std::int16_t item) {
    if (row.setting)
        choose_setting(row);
    if (row.procedure)
        row.procedure(item);
}

} // namespace quillon
