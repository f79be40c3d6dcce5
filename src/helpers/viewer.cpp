#include "helpers/viewer.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/path_forms.h"
#include "common/places.h"
#include "common/session_bus.h"
#include "common/viewers_table.h"
#include "helpers/launch.h"
#include "helpers/source_place.h"
#include "helpers/viewer_bus.h"
#include "helpers/window.h"

namespace helpers {

namespace {

// True when WORD, seen from the working folder of PROCESS, is DOCUMENT or its URI.
bool names(const std::string &word, const std::string &process, const std::string &document) {
    if (word.starts_with("file:"))
        return common::path_of_uri(word) == document;
    return common::canonical_path(common::absolute_path(process + "/cwd", word)) ==
           common::canonical_path(document);
}

// True when the process in the folder PROCESS below /proc runs a program of ROW that was started with
// DOCUMENT.
bool shows(const std::string &process, pid_t id, const common::ViewerRow &row, const std::string &document) {
    struct stat owner;
    if (stat(process.c_str(), &owner) != 0 || owner.st_uid != getuid())
        return false;
    const std::string line = common::words_of_process(id);
    // A script's own name is the second word, behind that of its interpreter.
    const std::string first = line.c_str();
    const std::size_t second = std::min(line.size(), first.size() + 1);
    const std::string script = line.c_str() + second;
    bool known = false;
    for (const std::string &name : {common::program_of_process(id), first, script})
        known = known || common::Contains(row.programs, common::leaf_of(name));
    for (std::size_t start = second; known && start < line.size();) {
        const std::string word = line.c_str() + start;
        if (names(word, process, document))
            return true;
        start += word.size() + 1;
    }
    return false;
}

// Returns the process of this user that shows DOCUMENT; 0 when there is none. Of a script and the program
// that it started, the program is meant.
pid_t process_that_shows(const common::ViewerRow &row, const std::string &document) {
    DIR *const processes = opendir("/proc");
    pid_t found = 0;
    while (const dirent *const entry = processes ? readdir(processes) : nullptr) {
        const pid_t process = std::atoi(entry->d_name);
        if (process > 0 && shows("/proc/" + std::to_string(process), process, row, document) &&
            (found == 0 ||
             common::Contains(row.programs, common::leaf_of(common::program_of_process(process)))))
            found = process;
    }
    if (processes)
        closedir(processes);
    return found;
}

// Returns the words of ARGUMENTS that hold for this request, with their codes filled in.
common::Words arguments_of(const common::Words &arguments, const std::string &document,
                           const SourcePlace &place, bool asked) {
    common::Words wanted;
    for (const std::string &argument : arguments)
        if (!argument.starts_with('?'))
            wanted.push_back(argument);
        else if (!asked)
            wanted.push_back(argument.substr(1));
    return common::FilledArguments(
        wanted, {{'d', document},
                 {'u', common::file_uri(document)},
                 {'f', place.file},
                 {'l', std::to_string(place.line)},
                 {'e', common::above_own_program(4) + "/Quillon.app/Contents/Helpers/edit"}});
}

bool start(const std::string &program, const common::ViewerRow &row, const std::string &document,
           const SourcePlace &place, bool asked, std::string &problem) {
    const bool at_source = place.line > 0 && !row.at_source.empty();
    Launch launch;
    launch.words = {program};
    if (source_links_are_on())
        for (std::string &word : arguments_of(row.links, document, place, asked))
            launch.words.push_back(std::move(word));
    for (std::string &word : arguments_of(at_source ? row.at_source : row.show, document, place, asked))
        launch.words.push_back(std::move(word));
    if (place.line > 0 && !row.evince.empty())
        launch.after = [&](pid_t) { tell_evince_when_there(row.evince, document, place); };
    if (const int error = start_detached(launch); error != 0)
        problem = "I can't start " + program + ": " + std::strerror(error);
    return problem.empty();
}

bool takes_a_line(const common::ViewerRow &row) {
    return row.zathura || !row.at_source.empty() || !row.evince.empty();
}

// Makes the viewer that runs as PROCESS show DOCUMENT as it is now.
bool refresh(pid_t process, const std::string &program, const common::ViewerRow &row,
             const std::string &document, const SourcePlace &place, bool asked, std::string &problem) {
    if (row.reread_signal != 0)
        kill(process, row.reread_signal);
    bool told = true;
    if (place.line > 0 && row.zathura)
        work_detached([&] { tell_zathura(process, place, asked); }, -1);
    else if (place.line > 0 && !row.evince.empty() && asked)
        // An Evince that is told a line comes to the front, so after a run it is told none.
        work_detached([&] { tell_evince(row.evince, document, place); }, -1);
    else if (place.line > 0 && !row.at_source.empty())
        told = start(program, row, document, place, asked, problem);
    if (asked && row.presents)
        return start(program, row, document, {}, asked, problem);
    if (asked)
        raise_windows_of(process);
    return told;
}

} // namespace

bool show_document(const common::Application &viewer, const std::string &document, Showing &showing,
                   std::string &problem) {
    const common::ViewerRow *const row =
        viewer.kind == common::Kind::bundle ? nullptr : common::FindViewerRow(viewer.path);
    const std::string program = row ? program_of(viewer, row->programs) : "";
    const SourcePlace place =
        row || showing.place.wanted ? place_to_show(document, showing.place) : SourcePlace{};
    if (showing.place.wanted && place.line == 0)
        showing.remark = why_no_place(document);
    else if (showing.place.wanted && (program.empty() || !takes_a_line(*row)))
        showing.remark =
            common::leaf_of(viewer.path) + " cannot be told a line, so it shows the document alone.";
    if (program.empty())
        return open_application(viewer, document, problem);
    common::leave_own_bus();
    const pid_t process = row->single ? process_that_shows(*row, document) : 0;
    if (process > 0)
        return refresh(process, program, *row, document, place, showing.asked, problem);
    return start(program, *row, document, place, showing.asked, problem);
}

} // namespace helpers
