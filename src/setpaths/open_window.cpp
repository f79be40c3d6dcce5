#include "setpaths/open_window.h"

#include <cstdlib>
#include <dlfcn.h>

#include "setpaths/databases.h"
#include "setpaths/defaults.h"
#include "setpaths/window/setup_window.h"
#include "toolbox/resources.h"
#include "toolhost/places.h"

namespace setpaths {

namespace {

bool is_set(const char *name) {
    const char *const value = std::getenv(name);
    return value && *value;
}

bool read_value(const std::string &key, std::string *value) {
    char *const set = quillon::RecordRead(toolhost::preferences_path().c_str(), key.c_str(), nullptr);
    if (!set)
        return false;
    *value = set;
    std::free(set);
    return true;
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
    const SetupWindowHost host = {home, read_value, propose, write_settings, write_databases};
    return show(host, status);
}

} // namespace setpaths
