// What an engine's recorder wrote down: the files that a run read and wrote.
#ifndef QUILLON_TOOLHOST_RECORDED_FILES_H
#define QUILLON_TOOLHOST_RECORDED_FILES_H

#include <string>
#include <string_view>
#include <vector>

namespace toolhost {

// All names are absolute POSIX paths, each once, in the order in which they were first opened.
struct RecordedFiles {
    std::vector<std::string> read;
    std::vector<std::string> written;
    std::vector<std::string> carried; // read first, and written later in the same run

    // True when the run wrote the file at PATH.
    bool wrote(const std::string &path) const;
    // True when the run read the file at PATH before it wrote it.
    bool carries(const std::string &path) const;
};

// Reads the recorder's list TEXT: lines "PWD FOLDER", "INPUT NAME" and "OUTPUT NAME". A name is relative to
// FOLDER. Other lines are passed over.
RecordedFiles read_recorder_list(std::string_view text);

} // namespace toolhost

#endif
