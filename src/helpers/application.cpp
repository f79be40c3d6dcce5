#include "helpers/application.h"

#include <algorithm>
#include <cstring>

#include "common/path_forms.h"
#include "common/session_bus.h"
#include "helpers/bundle.h"
#include "helpers/launch.h"
#include "helpers/terminal.h"

namespace helpers {

using common::Kind;

common::Application find_application(const std::string &name) {
    if (name.find('/') != std::string::npos)
        return common::application_at(name);
    const std::string entry = common::find_desktop_entry(name);
    return common::application_at(entry.empty() ? program_path(name) : entry);
}

std::string program_of(const common::Application &application, const std::vector<std::string> &names) {
    if (application.kind != Kind::entry)
        return application.path;
    const std::vector<std::string> words = common::entry_command(application.entry, "");
    const std::string first = words.empty() ? "" : words[0];
    if (std::find(names.begin(), names.end(), common::leaf_of(first)) != names.end() &&
        !program_path(first).empty())
        return program_path(first);
    for (const std::string &name : names)
        if (const std::string path = program_path(name); !path.empty())
            return path;
    return "";
}

static bool prepare_entry(const common::DesktopEntry &entry, const std::string &document, Launch &launch,
                          std::string &problem) {
    launch.words = common::entry_command(entry, document);
    launch.folder = entry.folder;
    if (launch.words.empty())
        problem = "there is no command in " + entry.path;
    else if (entry.terminal && (launch.words = in_terminal(launch.words)).empty())
        problem = "there is no terminal for " + entry.path + "; set TERMINAL";
    return problem.empty();
}

bool open_application(const common::Application &application, const std::string &document,
                      std::string &problem) {
    if (application.kind == Kind::bundle)
        return open_bundle(application.path, document, problem);
    common::leave_own_bus();
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
