#include "results.h"

#include <cstdlib>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "places.h"
#include "toolbox/resources.h"
#include "words.h"

namespace toolhost {

namespace {

bool newer(const timespec &a, const timespec &b) {
    return a.tv_sec != b.tv_sec ? a.tv_sec > b.tv_sec : a.tv_nsec >= b.tv_nsec;
}

std::string leaf_of(const std::string &path) {
    return path.substr(path.rfind('/') + 1);
}

bool leads_e_tex(const std::string &word) {
    const std::string name = leaf_of(word);
    return name == "pdfetex" || name == "etex" || name == "pdfelatex" || name == "elatex";
}

std::string output_folder(const EngineRun &run) {
    const std::string folder = option_value(run.words, "output-directory");
    return folder.empty() ? run.folder : absolute_path(run.folder, folder);
}

} // namespace

std::string engine_output(const EngineRun &run, const RunParser &parser) {
    if (!parser.output_name().empty()) {
        const std::string path = absolute_path(run.folder, parser.output_name());
        if (is_regular_file(path))
            return path;
        const std::string in_output_folder = absolute_path(output_folder(run), parser.output_name());
        if (is_regular_file(in_output_folder))
            return in_output_folder;
    }
    if (parser.said_no_output() || has_option(run.words, "ini"))
        return {};
    std::string name = option_value(run.words, "jobname");
    if (name.empty()) {
        name = leaf_of(main_file(run.words));
        if (const std::size_t dot = name.rfind('.'); dot != std::string::npos && dot > 0)
            name.resize(dot);
    }
    if (name.empty())
        return {};
    std::string best;
    // A file system may keep coarser times than the clock.
    timespec best_time = {run.started.tv_sec, run.started.tv_nsec - run.started.tv_nsec % 10000000};
    for (const char *extension : {".dvi", ".pdf"}) {
        const std::string path = absolute_path(output_folder(run), name + extension);
        struct stat status;
        if (stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && newer(status.st_mtim, best_time)) {
            best = path;
            best_time = status.st_mtim;
        }
    }
    return best;
}

void clear_output_setting() {
    const quillon::RecordChange change = {"PDFTEXOUTPUT", "0"};
    if (setting("PDFTEXOUTPUT") != "0")
        quillon::RecordWrite(preferences_path().c_str(), &change, 1);
}

void write_results(const EngineRun &run, bool engine, const std::string &output, const ErrorPlace &error) {
    const bool pdf = output.ends_with(".pdf");
    const std::string unix_output = to_unix_path(output, run.space);
    const std::string file = to_unix_path(error.file, run.space);
    const std::string line = std::to_string(error.line);
    std::vector<quillon::RecordChange> changes;
    if (engine) {
        changes.push_back({"DVIFILE", pdf ? "" : unix_output.c_str()});
        changes.push_back({"PDFFILE", pdf ? unix_output.c_str() : ""});
        changes.push_back({"PDFTEXOUTPUT", output.empty() ? "0" : pdf ? "1" : "2"});
    }
    if (error.known()) {
        changes.push_back({"FILENAME", file.c_str()});
        changes.push_back({"LINENUMBER", line.c_str()});
    }
    if (!changes.empty())
        quillon::RecordWrite(preferences_path().c_str(), changes.data(), static_cast<int>(changes.size()));
}

void stamp_format(const EngineRun &run, const RunParser &parser) {
    if (parser.dumped_format().empty() || run.words.empty())
        return;
    std::string path = absolute_path(run.folder, parser.dumped_format());
    if (!is_regular_file(path))
        path = absolute_path(output_folder(run), parser.dumped_format());
    // What Knuth's own engine dumps is no format for the engine that the shell runs.
    const char *const creator = leads_e_tex(run.words[0]) ? "qXET" : run.program == "tex" ? "????" : "QXET";
    setxattr(path.c_str(), "user.quillon.creator", creator, 4, 0);
    setxattr(path.c_str(), "user.quillon.type", "TFMT", 4, 0);
}

ErrorPlace read_edit_record(int descriptor, const std::string &folder) {
    std::string text;
    char block[4096];
    off_t at = 0;
    ssize_t count;
    while (text.size() < 65536 && (count = pread(descriptor, block, sizeof block, at)) > 0) {
        text.append(block, static_cast<std::size_t>(count));
        at += count;
    }
    const std::size_t end = text.find('\n');
    if (end == std::string::npos || text.size() < end + 3)
        return {};
    std::string name = text.substr(end + 1);
    name.pop_back();
    if (name.size() >= 2 && name.front() == '"' && name.back() == '"')
        name = name.substr(1, name.size() - 2);
    ErrorPlace place;
    place.line = std::strtol(text.c_str(), nullptr, 10);
    place.file = absolute_path(folder, name);
    if (!is_regular_file(place.file) && is_regular_file(place.file + ".tex"))
        place.file += ".tex";
    return place;
}

} // namespace toolhost
