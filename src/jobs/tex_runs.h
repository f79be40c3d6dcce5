// These procedures run TeX and pdfTeX, and dispatch the command lines that scripts and other programs send.
#ifndef QUILLON_JOBS_TEX_RUNS_H
#define QUILLON_JOBS_TEX_RUNS_H

namespace quillon {

// Typeset the file at PATH, a full Unix path, or one that the person chooses when PATH is null. Nothing runs
// when the person cancels, or when the folder or name does not fit 255 bytes, which the console says.
void DoTeX(const char *path);
void DoPdfTeX(const char *path);
// Typeset the current TeX file when REPEAT is 0; run the last command line in its folder again when REPEAT is
// 1.
void DoMenuTeX(int repeat);
void DoMenuPdfTeX(int repeat);
// Typeset the file at PATH, a full Unix path.
void DoRecentTeX(const char *path);
void DoRecentPdfTeX(const char *path);
// Run the command line mycommand in the folder curr_dir with the TeX engine, and do what follows a run.
void DoTeXAppleScript();
void DoPdfTeXAppleScript();
// Returns the procedure that runs the command line COMMAND with the tool that its first word names, null for
// an unknown word. The procedures are those above and those of tools/tool_runs.h.
using CommandProcedure = void (*)();
CommandProcedure procedure_of_command(const char *command);
// Runs the command line mycommand in the folder curr_dir with the tool that its first word names. An unknown
// word runs nothing and leaves job_outcome at job_unknown.
void DoAppleScript();
// Run the engine with a command line (at most 1,023 bytes) in FOLDER (a Unix path of at most 255 bytes).
// Return 1 when the engine replied, 0 when it could not be called or the texts do not fit.
int RunTeX(const char *command, const char *folder);
int RunPdfTeX(const char *command, const char *folder);

} // namespace quillon

#endif
