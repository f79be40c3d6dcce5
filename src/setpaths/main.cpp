// The set-up application: finds the TeX distribution and writes the preferences and the file databases.
#include <cstdio>
#include <string>

#include "common/places.h"
#include "setpaths/databases.h"
#include "setpaths/defaults.h"
#include "setpaths/open_window.h"
#include "setpaths/tell_shell.h"

int main(int count, char **values) {
    const std::string option = count > 1 ? values[1] : "";
    if (count > 2 || (!option.empty() && option != "--defaults" && option != "--databases")) {
        std::fputs(
            "setpaths                set the TeX distribution up, in a window where there is a display\n"
            "setpaths --defaults     the same, asking nothing; a value that is set stays\n"
            "setpaths --databases    rewrite the file databases\n",
            option == "--help" ? stdout : stderr);
        return option == "--help" ? 0 : 64;
    }
    const std::string home = common::above_own_program(4);
    if (int status = 0; option.empty() && setpaths::open_window(home, &status))
        return status;
    if (option != "--databases" && !setpaths::write_defaults(home))
        return 1;
    const bool written = setpaths::write_databases(home);
    setpaths::tell_shell();
    return written ? 0 : 1;
}
