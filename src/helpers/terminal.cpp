#include "helpers/terminal.h"

#include <cstdlib>

#include "common/path_forms.h"
#include "helpers/launch.h"

namespace helpers {

namespace {

// Returns the option after which a terminal takes the words of the command to run. Most know "-e".
std::string command_option(const std::string &program) {
    const std::string path = common::canonical_path(program);
    const auto is = [&](const char *name) { return path.ends_with(std::string("/") + name); };
    if (is("gnome-terminal") || is("kgx") || is("gnome-console") || is("ptyxis"))
        return "--";
    if (is("xfce4-terminal") || is("mate-terminal") || is("terminator"))
        return "-x";
    return "-e";
}

} // namespace

std::vector<std::string> in_terminal(const std::vector<std::string> &words) {
    const char *const chosen = std::getenv("TERMINAL");
    std::string program = chosen && *chosen ? program_path(chosen) : "";
    if (program.empty())
        program = program_path("x-terminal-emulator");
    if (program.empty())
        return {};
    std::vector<std::string> command = {program, command_option(program)};
    command.insert(command.end(), words.begin(), words.end());
    return command;
}

} // namespace helpers
