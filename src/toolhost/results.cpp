#include "toolhost/results.h"

#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "common/host_files.h"
#include "common/path_forms.h"
#include "common/preferences.h"
#include "toolhost/words.h"

namespace toolhost {

namespace {

bool newer(const timespec &a, const timespec &b) {
    return a.tv_sec != b.tv_sec ? a.tv_sec > b.tv_sec : a.tv_nsec >= b.tv_nsec;
}

bool leads_e_tex(const std::string &word) {
    const std::string name = common::leaf_of(word);
    return name == "pdfetex" || name == "etex" || name == "pdfelatex" || name == "elatex";
}

// Returns TIME cut to 10 ms: the times of a file system may be that much coarser than the clock.
timespec coarse(const timespec &time) {
    return {time.tv_sec, time.tv_nsec - time.tv_nsec % 10000000};
}

std::string output_folder(const EngineRun &run) {
    const std::string folder = option_value(run.words, "output-directory");
    return folder.empty() ? run.folder : common::absolute_path(run.folder, folder);
}

std::string without_extension(std::string name) {
    if (const std::size_t dot = name.rfind('.'); dot != std::string::npos && dot > 0)
        name.resize(dot);
    return name;
}

// The name that the engine's files have, from its words; empty when they do not say it.
std::string job_name(const EngineRun &run) {
    std::string name = option_value(run.words, "jobname");
    if (!name.empty())
        return name;
    return without_extension(common::leaf_of(main_file(run.words)));
}

} // namespace

std::string engine_output(const EngineRun &run, const RunParser &parser) {
    if (!parser.output_name().empty()) {
        const std::string path = common::absolute_path(run.folder, parser.output_name());
        if (common::is_regular_file(path))
            return path;
        const std::string in_output_folder = common::absolute_path(output_folder(run), parser.output_name());
        if (common::is_regular_file(in_output_folder))
            return in_output_folder;
    }
    if (parser.said_no_output() || has_option(run.words, "ini"))
        return {};
    const std::string name = job_name(run);
    if (name.empty())
        return {};
    std::string best;
    timespec best_time = coarse(run.started);
    for (const char *extension : {".dvi", ".pdf"}) {
        const std::string path = common::absolute_path(output_folder(run), name + extension);
        struct stat status;
        if (stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && newer(status.st_mtim, best_time)) {
            best = path;
            best_time = status.st_mtim;
        }
    }
    return best;
}

std::string expected_output(const EngineRun &run, bool dvi) {
    const std::string name = job_name(run), format = option_value(run.words, "output-format");
    if (name.empty() || has_option(run.words, "ini"))
        return {};
    const bool writes_dvi = format.empty() ? dvi : format == "dvi";
    return common::absolute_path(output_folder(run), name + (writes_dvi ? ".dvi" : ".pdf"));
}

std::string output_stem(const EngineRun &run) {
    const std::string name = job_name(run);
    return common::absolute_path(output_folder(run), name.empty() ? "texput" : name);
}

std::string recorder_file(const EngineRun &run, const RunParser &parser) {
    std::string name = job_name(run);
    if (name.empty())
        name = without_extension(common::leaf_of(parser.output_name()));
    return common::absolute_path(output_folder(run), (name.empty() ? "texput" : name) + ".fls");
}

void clear_output_setting() {
    if (common::setting("PDFTEXOUTPUT") != "0")
        common::write_preferences({{"PDFTEXOUTPUT", "0"}});
}

void write_results(const EngineRun &run, bool engine, const std::string &output, bool whole,
                   const ErrorPlace &error) {
    const bool pdf = output.ends_with(".pdf");
    const std::string unix_output = common::to_unix_path(output, run.space);
    std::vector<common::SettingChange> changes;
    if (engine) {
        changes.push_back({"DVIFILE", pdf ? "" : unix_output});
        changes.push_back({"PDFFILE", pdf ? unix_output : ""});
        changes.push_back({"PDFTEXOUTPUT", output.empty() || !whole ? "0" : pdf ? "1" : "2"});
    }
    if (error.known()) {
        changes.push_back({"FILENAME", common::to_unix_path(error.file, run.space)});
        changes.push_back({"LINENUMBER", std::to_string(error.line)});
    }
    if (!changes.empty())
        common::write_preferences(changes);
}

void stamp_format(const EngineRun &run, const RunParser &parser) {
    if (parser.dumped_format().empty() || run.words.empty())
        return;
    std::string path = common::absolute_path(run.folder, parser.dumped_format());
    if (!common::is_regular_file(path))
        path = common::absolute_path(output_folder(run), parser.dumped_format());
    // The engine that the shell runs cannot load a format of Knuth's own engine.
    const char *const creator = leads_e_tex(run.words[0]) ? "qXET" : run.program == "tex" ? "????" : "QXET";
    setxattr(path.c_str(), "user.quillon.creator", creator, 4, 0);
    setxattr(path.c_str(), "user.quillon.type", "TFMT", 4, 0);
}

void mend_auxiliary_file(const EngineRun &run) {
    const std::string path = common::absolute_path(output_folder(run), job_name(run) + ".aux");
    struct stat status;
    const int file = open(path.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK);
    if (file < 0)
        return;
    off_t end = 0;
    if (fstat(file, &status) == 0 && S_ISREG(status.st_mode) && newer(status.st_mtim, coarse(run.started)))
        end = status.st_size;
    // A file that another run wrote is left alone; of this run's, what follows the last line end goes.
    off_t kept = end;
    char byte = '\n';
    while (kept > 0 && pread(file, &byte, 1, kept - 1) == 1 && byte != '\n')
        kept--;
    if (kept < end && ftruncate(file, kept) != 0)
        unlink(path.c_str());
    close(file);
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
    place.file = common::absolute_path(folder, name);
    if (!common::is_regular_file(place.file) && common::is_regular_file(place.file + ".tex"))
        place.file += ".tex";
    return place;
}

} // namespace toolhost
