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

// Each switches its flag, its mark and its setting.
void toggle_pdftex(std::int16_t item);
void toggle_specials(std::int16_t item);
void toggle_record(std::int16_t item);
void toggle_view(std::int16_t item);
void toggle_debug(std::int16_t item);
void toggle_8bit(std::int16_t item);
void toggle_etex(std::int16_t item);
void toggle_parse(std::int16_t item);

void choose_font(std::int16_t item);
void choose_recent(std::int16_t item);
void choose_mp_format(std::int16_t item);

int has_tex_file();
int has_last_command();
int has_bib_file();
int has_dvi_file();
int has_ps_file();
int has_pdf_file();

int pdftex_is_off();
int specials_are_on();
int record_is_on();
int view_is_on();
int debug_is_on();
int eight_bit_is_on();
int etex_is_on();
int parse_is_on();
int mp_format_is_1();
int mp_format_is_2();

} // namespace quillon

#endif
