#include "setpaths/open_window.h"

#include <cstdlib>
#include <dlfcn.h>

#include "common/preferences.h"
#include "setpaths/databases.h"
#include "setpaths/defaults.h"
#include "setpaths/findings.h"
#include "setpaths/reverse_search.h"
#include "setpaths/tell_shell.h"
#include "setpaths/window/setup_window.h"

namespace setpaths {

namespace {

bool is_set(const char *name) {
    const char *const value = std::getenv(name);
    return value && *value;
}

bool write_databases_and_tell(const std::string &home) {
    const bool written = write_databases(home);
    tell_shell();
    return written;
}

} // namespace

bool open_window(const std::string &home, int *status) {
    if (!is_set("DISPLAY") && !is_set("WAYLAND_DISPLAY"))
        return false;
    const std::string plug_in = home + "/Quillon.app/Contents/Linux/setup-window.so";
    void *const library = dlopen(plug_in.c_str(), RTLD_NOW | RTLD_LOCAL);
    const auto show =
        library ? reinterpret_cast<SetupWindowProc>(dlsym(library, setup_window_symbol)) : nullptr;
    if (!show)
        return false;
    const SetupWindowHost host = {home,
                                  common::read_setting,
                                  propose,
                                  findings,
                                  write_settings,
                                  write_databases_and_tell,
                                  reverse_searches,
                                  described,
                                  write_reverse_search};
    return show(host, status);
}

} // namespace setpaths
