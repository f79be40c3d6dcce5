#include "core/command_table.h"

#include "core/commands.h"
#include "menus/formats.h"

namespace quillon {

const MenuRow menu_rows[] = {
    {menu_apple, "Quillon", 1},
    {menu_file, "File", 1},
    {menu_edit, "Edit", 1},
    {menu_options, "Options", 1},
    {menu_tool, "Tools", 1},
    {menu_transfer, "Transfer", 1},
    {menu_format, "Formats", 0},
    {menu_build, "Build Format", 0},
    {menu_info, "Information", 0},
    {menu_font, "Font", 0},
    {menu_config, "Configuration Files", 0},
    {menu_recent, "Recent Files", 0},
    {menu_mpformat, "MetaPost Format", 0},
    {menu_delete, "Delete", 0},
    {menu_change, "Change", 0},
};
const int menu_row_count = sizeof menu_rows / sizeof menu_rows[0];

static const char separator[] = "(-";

// A command whose procedure is null is shown disabled.
const Command command_table[] = {
    {menu_apple, 1, "About Quillon", 0, 0, command_about, nullptr, nullptr},
    {menu_apple, 2, separator, 0, 0, nullptr, nullptr, nullptr},
    {menu_apple, 3, "Quit Quillon", 0, 0, command_leave, nullptr, nullptr},

    {menu_file, 1, "Typeset File...", 'O', 0, command_typeset_chosen, nullptr, nullptr},
    {menu_file, 2, "Typeset", 'T', 0, command_typeset_current, has_tex_file, nullptr},
    {menu_file, 3, "Recent Files", 0, menu_recent, nullptr, nullptr, nullptr},
    {menu_file, 4, separator, 0, 0, nullptr, nullptr, nullptr},
    {menu_file, 5, "Repeat Last Command", 'R', 0, command_repeat, has_last_command, nullptr},
    {menu_file, 6, "Build Format", 0, menu_build, nullptr, nullptr, nullptr},
    {menu_file, 7, separator, 0, 0, nullptr, nullptr, nullptr},
    {menu_file, 8, "bibtex", 0, 0, nullptr, has_bib_file, nullptr},
    {menu_file, 9, separator, 0, 0, nullptr, nullptr, nullptr},
    {menu_file, 10, "View", 'D', 0, command_view_dvi, has_dvi_file, nullptr},
    {menu_file, 11, "dvips", 0, 0, nullptr, has_dvi_file, nullptr},
    {menu_file, 12, separator, 0, 0, nullptr, nullptr, nullptr},
    {menu_file, 13, "View", 0, 0, command_view_ps, has_ps_file, nullptr},
    {menu_file, 14, "ps2pdf", 0, 0, nullptr, has_ps_file, nullptr},
    {menu_file, 15, separator, 0, 0, nullptr, nullptr, nullptr},
    {menu_file, 16, "View", 'P', 0, command_view_pdf, has_pdf_file, nullptr},
    {menu_file, 17, separator, 0, 0, nullptr, nullptr, nullptr},
    {menu_file, 18, "Save Console As...", 'S', 0, command_save_console, nullptr, nullptr},
    {menu_file, 19, separator, 0, 0, nullptr, nullptr, nullptr},
    {menu_file, 20, "Quit", 'Q', 0, command_quit, nullptr, nullptr},

    {menu_format, 0, nullptr, 0, 0, DoFormat, nullptr, nullptr},

    {menu_options, 1, "Formats", 0, menu_format, nullptr, nullptr, nullptr},
    {menu_options, 2, "Use TeX (DVI Output)", 0, 0, toggle_pdftex, nullptr, pdftex_is_off},
    {menu_options, 3, "Add Source Links", 0, 0, toggle_specials, nullptr, specials_are_on},
    {menu_options, 4, "Record Files Used", 0, 0, toggle_record, nullptr, record_is_on},
    {menu_options, 5, "pdfTeX Options...", 0, 0, nullptr, nullptr, nullptr},
    {menu_options, 6, separator, 0, 0, nullptr, nullptr, nullptr},
    {menu_options, 7, "View Output Automatically", 0, 0, toggle_view, nullptr, view_is_on},
    {menu_options, 8, "Show Debug Output", 0, 0, toggle_debug, nullptr, debug_is_on},
    {menu_options, 9, "Set Up Paths...", 0, 0, command_setpaths, nullptr, nullptr},
    {menu_options, 10, "Set Applications...", 0, 0, nullptr, nullptr, nullptr},
    {menu_options, 11, separator, 0, 0, nullptr, nullptr, nullptr},
    {menu_options, 12, "BibTeX8 Options...", 0, 0, nullptr, nullptr, nullptr},
    {menu_options, 13, "dvips Options...", 0, 0, nullptr, nullptr, nullptr},
    {menu_options, 14, "MetaPost Format", 0, menu_mpformat, nullptr, nullptr, nullptr},
    {menu_options, 15, separator, 0, 0, nullptr, nullptr, nullptr},
    {menu_options, 16, "e-TeX Mode", 'E', 0, toggle_etex, nullptr, etex_is_on},
    {menu_options, 17, "Parse First Line", 0, 0, toggle_parse, nullptr, parse_is_on},

    {menu_edit, 1, "Undo", 'Z', 0, nullptr, nullptr, nullptr},
    {menu_edit, 2, separator, 0, 0, nullptr, nullptr, nullptr},
    {menu_edit, 3, "Cut", 'X', 0, nullptr, nullptr, nullptr},
    {menu_edit, 4, "Copy", 'C', 0, command_copy, nullptr, nullptr},
    {menu_edit, 5, "Paste", 'V', 0, nullptr, nullptr, nullptr},
    {menu_edit, 6, "Clear Console", 'K', 0, command_clear, nullptr, nullptr},
    {menu_edit, 7, separator, 0, 0, nullptr, nullptr, nullptr},
    {menu_edit, 8, "Font", 0, menu_font, nullptr, nullptr, nullptr},
    {menu_edit, 9, "Font Size...", 0, 0, nullptr, nullptr, nullptr},
    {menu_edit, 10, separator, 0, 0, nullptr, nullptr, nullptr},
    {menu_edit, 11, "8-bit Output", '8', 0, toggle_8bit, nullptr, eight_bit_is_on},
    {menu_edit, 12, separator, 0, 0, nullptr, nullptr, nullptr},
    {menu_edit, 13, "Information", 0, menu_info, nullptr, nullptr, nullptr},
    {menu_edit, 14, separator, 0, 0, nullptr, nullptr, nullptr},
    {menu_edit, 15, "Configuration Files", 0, menu_config, nullptr, nullptr, nullptr},

    {menu_build, 1, "pdfTeX Format", 0, 0, nullptr, nullptr, nullptr},
    {menu_build, 2, "pdfLaTeX Format", 0, 0, nullptr, nullptr, nullptr},
    {menu_build, 3, "Execute...", 0, 0, nullptr, nullptr, nullptr},

    {menu_tool, 1, "BibTeX...", 'B', 0, nullptr, nullptr, nullptr},
    {menu_tool, 2, "dvips...", 0, 0, nullptr, nullptr, nullptr},
    {menu_tool, 3, "MakeIndex...", 'I', 0, nullptr, nullptr, nullptr},
    {menu_tool, 4, "MetaPost...", 'M', 0, nullptr, nullptr, nullptr},
    {menu_tool, 5, "Build MetaPost Format...", 0, 0, nullptr, nullptr, nullptr},
    {menu_tool, 6, separator, 0, 0, nullptr, nullptr, nullptr},
    {menu_tool, 7, "ps2pdf...", 0, 0, nullptr, nullptr, nullptr},
    {menu_tool, 8, separator, 0, 0, nullptr, nullptr, nullptr},
    {menu_tool, 9, "dvipdfm", 0, 0, nullptr, has_dvi_file, nullptr},

    {menu_info, 1, "dvips", 0, 0, info, nullptr, nullptr},
    {menu_info, 2, "MakeIndex", 0, 0, info, nullptr, nullptr},
    {menu_info, 3, "MetaPost", 0, 0, info, nullptr, nullptr},
    {menu_info, 4, "pdfTeX", 0, 0, info, nullptr, nullptr},

    {menu_font, 0, nullptr, 0, 0, choose_font, nullptr, nullptr},

    {menu_config, 1, "config.ps", 0, 0, nullptr, nullptr, nullptr},
    {menu_config, 2, "pdftexconfig.tex", 0, 0, nullptr, nullptr, nullptr},
    {menu_config, 3, separator, 0, 0, nullptr, nullptr, nullptr},
    {menu_config, 4, "tex.cnf", 0, 0, nullptr, nullptr, nullptr},
    {menu_config, 5, "pdftex.cnf", 0, 0, nullptr, nullptr, nullptr},

    {menu_recent, 0, nullptr, 0, 0, choose_recent, nullptr, nullptr},

    {menu_mpformat, 1, "Plain TeX Labels", 0, 0, choose_mp_format, nullptr, mp_format_is_1},
    {menu_mpformat, 2, "LaTeX Labels", 0, 0, choose_mp_format, nullptr, mp_format_is_2},

    {menu_transfer, 1, "Add ...", 0, 0, nullptr, nullptr, nullptr},
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

} // namespace quillon
