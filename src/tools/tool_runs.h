// Runs of the programs that accompany TeX: dvips, BibTeX, MakeIndex, MetaPost, dvipdfm, and the converter
// from PostScript to PDF. A tool that is missing is named in the console; how a run ended is in exit_status.
//
// Paths are Unix paths. A run's working folder is the folder of its file, a path up to its last "/".
#ifndef QUILLON_TOOLS_TOOL_RUNS_H
#define QUILLON_TOOLS_TOOL_RUNS_H

namespace quillon {

// Run dvips on the DVI file at DVI; an empty path runs nothing. The first takes the stored options; the other
// those given, and the name of the output file, both of which may be empty.
void RunDvips(const char *dvi);
void RunFullDvips(const char *dvi, const char *out, const char *options);
// Runs BibTeX on the .aux file at AUX, with the stored options.
void RunBibTeX(const char *aux);
// Run MakeIndex as its dialog says (0 when that was cancelled, else 1), and with the stored options on the
// file at INDEX.
int RunMakeIndex();
void RunOdocMakeIndex(const char *index);
// Runs MetaPost: 1 on a file that the person chooses, 2 with a command line that the person types, 3 to build
// a format with the command line that is proposed.
void RunMetaPost(int mode);
// Runs MetaPost on the file at MP.
void RunOdocMetaPost(const char *mp);
// Opens a PostScript file in the converter to PDF: 1 the current one, 2 one that the person chooses.
void RunPs2pdf(int mode);
// Runs dvipdfm on the DVI file at DVI.
void RunDvipdfm(const char *dvi);

// Each runs the command line mycommand in the folder curr_dir with the tool of its name, and waits for it.
// When the tool is missing, job_outcome is job_not_run.
void DoDvipsAppleScript();
void DoBibtexAppleScript();
void DoMakeindexAppleScript();
void DoMpostAppleScript();
void DoDvipdfmAppleScript();
void DoBiberAppleScript();

} // namespace quillon

#endif
