// TeX and pdfTeX runs: command lines composed and run, and the dispatcher of script commands.
#ifndef QUILLON_JOBS_TEX_RUNS_H
#define QUILLON_JOBS_TEX_RUNS_H

namespace quillon {

// PATH is a full Unix path, or null to ask.
void DoTeX(const char *path);
void DoPdfTeX(const char *path);
// REPEAT 0: the current TeX file; 1: the last command again.
void DoMenuTeX(int repeat);
void DoMenuPdfTeX(int repeat);
void DoRecentTeX(const char *path);
void DoRecentPdfTeX(const char *path);
void DoTeXAppleScript();
void DoPdfTeXAppleScript();
// Runs mycommand in curr_dir; its first word says as what.
void DoAppleScript();
// Non-zero when the tool call succeeded.
int RunTeX(const char *command, const char *folder);
int RunPdfTeX(const char *command, const char *folder);

} // namespace quillon

#endif
