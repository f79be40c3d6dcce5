// These procedures carry out the rows of the command table, and say when an item is enabled or marked.
#ifndef QUILLON_CORE_COMMANDS_H
#define QUILLON_CORE_COMMANDS_H

#include <cstdint>

namespace quillon {

// Each of these carries out the menu command that its name says; the command table holds the titles. ITEM is
// not used. A command that fails says so in the console.
void command_about(std::int16_t item);
// Sends the shell a quit event, which works even after a fatal error.
void command_leave(std::int16_t item);
// Run TeX or pdfTeX, as usePdfTeX says: on a file that the person chooses, on the current TeX file, and with
// the last command line again.
void command_typeset_chosen(std::int16_t item);
void command_typeset_current(std::int16_t item);
void command_repeat(std::int16_t item);
// Run BibTeX and dvips on the current .aux and DVI file, and open the current PostScript file in the
// converter to PDF.
void command_bibtex(std::int16_t item);
void command_dvips(std::int16_t item);
void command_ps2pdf(std::int16_t item);
// Show the dialogs for the options of pdfTeX, bibtex8 and dvips, for the applications, and for the font size.
void command_pdftex_options(std::int16_t item);
void command_bibtex_options(std::int16_t item);
void command_dvips_options(std::int16_t item);
void command_applications(std::int16_t item);
void command_font_size(std::int16_t item);
// Shows the bar that finds text in the console, where there is a window.
void command_find_text(std::int16_t item);
// Show the window with the problems of the last run, and open the next or the previous one in the editor.
void command_problems(std::int16_t item);
void command_next_problem(std::int16_t item);
void command_previous_problem(std::int16_t item);
// Open the current DVI, PostScript or PDF file in its viewer.
void command_view_dvi(std::int16_t item);
void command_view_ps(std::int16_t item);
void command_view_pdf(std::int16_t item);
// Show the place that was edited last in the viewer, and the window for what the document's runs wrote.
void command_show(std::int16_t item);
void command_clean(std::int16_t item);
// Asks for a file and writes the console's text into it.
void command_save_console(std::int16_t item);
// Stores the recent files and lets the event loop end the program.
void command_quit(std::int16_t item);
// Launches the set-up application.
void command_setpaths(std::int16_t item);
// Copy the console's selection to the clipboard; empty the console.
void command_copy(std::int16_t item);
void command_clear(std::int16_t item);

// Switch e-TeX mode (which also rebuilds the Formats menu) and the parsing of the first line, and mark ITEM
// of the Options menu to match.
void toggle_etex(std::int16_t item);
void toggle_parse(std::int16_t item);

// Stores the font that ITEM of the Font menu names and moves the check mark there.
void choose_font(std::int16_t item);
// Carries out an item of the Recent Files menu: typesets a file, switches between full paths and names, or
// removes all files. A file that cannot be opened is taken out of the menu when the person confirms.
void choose_recent(std::int16_t item);

// Print the text of the Help menu's item in the console: the manual or the meaning of messages, and the list
// of all keys.
void help(std::int16_t item);
void help_with_keys(std::int16_t item);
// Asks for a package and shows its manual.
void command_package_manual(std::int16_t item);

// Enabling rules: 1 when the job state holds the file or command line that the item needs, else 0.
int has_tex_file();
int has_last_command();
int has_bib_file();
int has_dvi_file();
int has_ps_file();
int has_pdf_file();

// Marks: 1 while the option is on, else 0.
int etex_is_on();
int parse_is_on();

} // namespace quillon

#endif
