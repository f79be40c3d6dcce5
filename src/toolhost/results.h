// What a run leaves behind: its output and its error in the preferences, a new format's stamp.
#ifndef QUILLON_TOOLHOST_RESULTS_H
#define QUILLON_TOOLHOST_RESULTS_H

#include <ctime>
#include <string>
#include <vector>

#include "toolhost/run_parser.h"

namespace toolhost {

struct EngineRun {
    std::vector<std::string> words;
    std::string program; // leaf of the program that ran
    std::string folder;
    timespec started{};
    unsigned char space = 0;
};

// The absolute path of what the engine wrote: what it said, else what is newer than the start; empty for
// nothing.
std::string engine_output(const EngineRun &run, const RunParser &parser);
// The absolute path of the output that the engine will write, judged by its words; empty when they do not say
// it. DVI says that the engine writes DVI unless told otherwise.
std::string expected_output(const EngineRun &run, bool dvi);
// `PDFTEXOUTPUT` 0 before an engine starts.
void clear_output_setting();
// One transaction: `DVIFILE`, `PDFFILE`, `PDFTEXOUTPUT` when ENGINE, `FILENAME` and `LINENUMBER` when ERROR
// is known. WHOLE false: the run was cancelled or failed, so that nothing is to be viewed by itself.
void write_results(const EngineRun &run, bool engine, const std::string &output, bool whole,
                   const ErrorPlace &error);
// Cuts the .aux file of an engine that had to be killed back to its last whole line, so that the next run can
// read it.
void mend_auxiliary_file(const EngineRun &run);
// Stamps the format that the run dumped with its creator: 'qXET' in e-TeX mode, else 'QXET'.
void stamp_format(const EngineRun &run, const RunParser &parser);
// What the engine's edit command wrote: the line, then the name up to a line end. Unknown when it wrote
// nothing.
ErrorPlace read_edit_record(int descriptor, const std::string &folder);

} // namespace toolhost

#endif
