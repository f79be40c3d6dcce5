#include "helpers/dvi_viewer.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/bundle.h"
#include "common/host_files.h"
#include "common/path_forms.h"
#include "common/places.h"
#include "common/preferences.h"
#include "helpers/application.h"
#include "helpers/launch.h"

namespace helpers {

namespace {

constexpr std::size_t longest_command_line = 1 << 17;

// True when the process of this user runs xdvi and was started with DOCUMENT.
bool shows(pid_t process, const std::string &document) {
    const std::string folder = "/proc/" + std::to_string(process);
    struct stat owner;
    if (stat(folder.c_str(), &owner) != 0 || owner.st_uid != getuid() ||
        !common::leaf_of(common::program_of_process(process)).starts_with("xdvi"))
        return false;
    const std::string words = '\0' + common::read_file(folder + "/cmdline", longest_command_line);
    return words.find('\0' + document + '\0') != std::string::npos;
}

// Has the xdvi that shows DOCUMENT read it again. False when there is none.
bool reread(const std::string &document) {
    DIR *const processes = opendir("/proc");
    bool found = false;
    while (processes && !found) {
        const dirent *const entry = readdir(processes);
        if (!entry)
            break;
        const pid_t process = std::atoi(entry->d_name);
        found = process > 0 && shows(process, document) && kill(process, SIGUSR1) == 0;
    }
    if (processes)
        closedir(processes);
    return found;
}

bool show_in_xdvi(const std::string &program, const std::string &document, std::string &problem) {
    if (reread(document))
        return true;
    Launch launch;
    launch.words = {program, document};
    if (const int error = start_detached(launch); error != 0)
        problem = "I can't start " + program + ": " + std::strerror(error);
    return problem.empty();
}

} // namespace

bool show_dvi(const std::string &document, std::string &problem) {
    // This program and the commands lie in different bundles of the same folder.
    const std::string home = common::above_own_program(4);
    const std::string chosen =
        common::expand_setting_path(common::setting("DVIPREVIEW"), home, common::space_byte());
    if (chosen.empty()) {
        if (!program_path("xdvi").empty())
            return show_in_xdvi("xdvi", document, problem);
        problem =
            "there is no viewer for DVI files. Install texlive-binaries, which has xdvi, or choose one with "
            "Options > Set Applications...";
        return false;
    }
    const common::Application viewer = find_application(chosen);
    if (viewer.kind == common::Kind::bundle && common::signature_of_bundle(viewer.path) == dviview_signature)
        problem = "the DVI previewer that is chosen is dviview itself; choose the viewer that it is to start";
    else if (viewer.kind == common::Kind::none)
        problem = "I can't find the DVI previewer " + chosen;
    else if (viewer.kind == common::Kind::program && common::leaf_of(viewer.path).starts_with("xdvi"))
        return show_in_xdvi(viewer.path, document, problem);
    else
        return open_application(viewer, document, problem);
    return false;
}

} // namespace helpers
