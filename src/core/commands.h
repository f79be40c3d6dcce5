// The procedures behind the rows of the command table, with their enabling rules and marks.
#ifndef QUILLON_CORE_COMMANDS_H
#define QUILLON_CORE_COMMANDS_H

#include <cstdint>

namespace quillon {

void command_about(std::int16_t item);
void command_leave(std::int16_t item);
void command_typeset_chosen(std::int16_t item);
void command_typeset_current(std::int16_t item);
void command_repeat(std::int16_t item);
void command_view_dvi(std::int16_t item);
void command_view_ps(std::int16_t item);
void command_view_pdf(std::int16_t item);
void command_save_console(std::int16_t item);
void command_quit(std::int16_t item);
void command_setpaths(std::int16_t item);
void command_copy(std::int16_t item);
void command_clear(std::int16_t item);

// Each switches its flag and its mark.
void toggle_etex(std::int16_t item);
void toggle_parse(std::int16_t item);

void choose_font(std::int16_t item);
void choose_recent(std::int16_t item);

int has_tex_file();
int has_last_command();
int has_bib_file();
int has_dvi_file();
int has_ps_file();
int has_pdf_file();

int etex_is_on();
int parse_is_on();

} // namespace quillon

#endif
