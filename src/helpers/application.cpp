#include "helpers/application.h"

#include <cstring>

#include "common/host_files.h"
#include "helpers/bundle.h"
#include "helpers/launch.h"
#include "helpers/terminal.h"

namespace helpers {

Application find_application(const std::string &name) {
    Application application;
    application.path = name;
    while (application.path.size() > 1 && application.path.ends_with('/'))
        application.path.pop_back();
    std::string &path = application.path;
    if (path.find('/') == std::string::npos) {
        const std::string entry = find_desktop_entry(path);
        path = entry.empty() ? program_path(path) : entry;
    }
    if (path.ends_with(".desktop") && read_desktop_entry(path, application.entry))
        application.kind = Kind::entry;
    else if (common::is_folder(path))
        application.kind = common::is_folder(path + "/Contents/Linux") ? Kind::bundle : Kind::none;
    else if (!path.empty() && !program_path(path).empty())
        application.kind = Kind::program;
    return application;
}

static bool prepare_entry(const DesktopEntry &entry, const std::string &document, Launch &launch,
                          std::string &problem) {
    launch.words = entry_command(entry, document);
    launch.folder = entry.folder;
    if (launch.words.empty())
        problem = "there is no command in " + entry.path;
    else if (entry.terminal && (launch.words = in_terminal(launch.words)).empty())
        problem = "there is no terminal for " + entry.path + "; set TERMINAL";
    return problem.empty();
}

bool open_application(const Application &application, const std::string &document, std::string &problem) {
    if (application.kind == Kind::bundle)
        return open_bundle(application.path, document, problem);
    const bool is_entry = application.kind == Kind::entry;
    if (is_entry && application.entry.bus_activatable && open_on_bus(application.entry, document))
        return true;
    Launch launch;
    launch.words = {application.path};
    if (!document.empty())
        launch.words.push_back(document);
    if (is_entry && !prepare_entry(application.entry, document, launch, problem))
        return false;
    if (const int error = start_detached(launch); error != 0)
        problem = "I can't start " + launch.words[0] + ": " + std::strerror(error);
    return problem.empty();
}

} // namespace helpers
