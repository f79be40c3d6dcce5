// What a run leaves behind: its output and its error in the preferences, and the stamp of a new format.
#ifndef QUILLON_TOOLHOST_RESULTS_H
#define QUILLON_TOOLHOST_RESULTS_H

#include <ctime>
#include <string>
#include <vector>

#include "toolhost/run_parser.h"

namespace toolhost {

struct EngineRun {
    std::vector<std::string> words; // of its command line
    std::string program;            // the file name of the program that ran
    std::string folder;             // where it ran, an absolute POSIX path
    timespec started{};
    unsigned char space = 0; // the byte for a blank in the settings
};

// Returns the absolute path of the DVI or PDF file that the engine wrote, empty when it wrote none. The name
// that the engine printed counts first, then a file of the job's name that is newer than the start.
std::string engine_output(const EngineRun &run, const RunParser &parser);
// Returns the absolute path of the output that the engine will write, judged by its words; empty when they do
// not say it. DVI says that the engine writes DVI unless told otherwise.
std::string expected_output(const EngineRun &run, bool dvi);
// Returns the absolute path that the files of the engine have but for their extensions.
std::string output_stem(const EngineRun &run);
// Returns the absolute path of the list of files that the engine's recorder writes. The file need not exist.
std::string recorder_file(const EngineRun &run, const RunParser &parser);
// Sets `PDFTEXOUTPUT` to 0, as is done before an engine starts.
void clear_output_setting();
// Writes what came of a run to the preferences, as one transaction. When ENGINE: OUTPUT (an absolute path,
// empty for none) to `DVIFILE` or `PDFFILE`, and its kind to `PDFTEXOUTPUT` (0 none, 1 PDF, 2 DVI). When
// ERROR is known: its place to `FILENAME` and `LINENUMBER`. WHOLE false: the run was cancelled or failed, so
// that `PDFTEXOUTPUT` is 0 and nothing is viewed by itself.
void write_results(const EngineRun &run, bool engine, const std::string &output, bool whole,
                   const ErrorPlace &error);
// Cuts the .aux file of an engine that had to be killed back to its last whole line, so that the next run can
// read it.
void mend_auxiliary_file(const EngineRun &run);
// Stamps the format file that the run dumped, if any, with the creator of the engines that load it: 'qXET' in
// e-TeX mode, else 'QXET', and '????' for Knuth's own engine. The stamp is an extended attribute of the file.
void stamp_format(const EngineRun &run, const RunParser &parser);
// Reads the file that edit_command wrote, open as DESCRIPTOR: a line with the number, then the name. Relative
// names are taken in FOLDER. The place is not known() when nothing was written.
ErrorPlace read_edit_record(int descriptor, const std::string &folder);

} // namespace toolhost

#endif
