// The set-up application: finds the TeX distribution and writes the preferences and the file databases.
#include <cstdio>
#include <string>

#include "common/places.h"
#include "setpaths/databases.h"
#include "setpaths/defaults.h"
#include "setpaths/open_window.h"
#include "setpaths/reverse_search.h"
#include "setpaths/tell_shell.h"

namespace {

// Writes the lines for the viewer of that name, or tells of each what would be written. Returns the exit
// status.
int reverse_search(const std::string &home, const std::string &viewer) {
    bool found = false;
    for (const setpaths::ReverseSearch &wanted : setpaths::reverse_searches(home)) {
        if (viewer.empty())
            std::printf("%s%s: %s", found ? "\n" : "", wanted.viewer.c_str(),
                        setpaths::described(wanted).c_str());
        found = found || viewer.empty();
        if (wanted.viewer != viewer)
            continue;
        std::string said;
        const bool written = setpaths::write_reverse_search(wanted, &said);
        std::fprintf(written ? stdout : stderr, "%s%s\n", written ? "" : "setpaths: ", said.c_str());
        return written ? 0 : 1;
    }
    if (!found)
        std::fputs(viewer.empty()
                       ? "setpaths: no viewer is installed that keeps the command in a settings file\n"
                       : "setpaths: this is no viewer that keeps the command in a settings file\n",
                   stderr);
    return found ? 0 : 1;
}

} // namespace

int main(int count, char **values) {
    const std::string option = count > 1 ? values[1] : "";
    const std::string home = common::above_own_program(4);
    if (option == "--reverse-search" && count <= 3)
        return reverse_search(home, count > 2 ? values[2] : "");
    if (count > 2 || (!option.empty() && option != "--defaults" && option != "--databases")) {
        std::fputs(
            "setpaths                set the TeX distribution up, in a window where there is a display\n"
            "setpaths --defaults     the same, asking nothing; a value that is set stays\n"
            "setpaths --databases    rewrite the file databases\n"
            "setpaths --reverse-search [VIEWER]\n"
            "                        show what a viewer needs in its settings to open the editor by a "
            "click;\n"
            "                        with a name, write it\n",
            option == "--help" ? stdout : stderr);
        return option == "--help" ? 0 : 64;
    }
    if (int status = 0; option.empty() && setpaths::open_window(home, &status))
        return status;
    if (option != "--databases" && !setpaths::write_defaults(home))
        return 1;
    const bool written = setpaths::write_databases(home);
    setpaths::tell_shell();
    return written ? 0 : 1;
}
