// The contract between the set-up and its window, which is a plug-in of the same build.
#ifndef QUILLON_SETPATHS_WINDOW_SETUP_WINDOW_H
#define QUILLON_SETPATHS_WINDOW_SETUP_WINDOW_H

#include <string>

#include "setpaths/defaults.h"

namespace setpaths {

struct SetupWindowHost {
    std::string home; // the binaries folder
    // As the preferences have it; false when it is not set.
    bool (*value)(const char *key, std::string *value);
    Proposal (*propose)(const std::string &home, const std::string &programs);
    bool (*write_settings)(const Values &changes, const Proposal &proposal);
    bool (*write_databases)(const std::string &home);
};

// False when the desktop shows no windows; else STATUS is the program's exit status.
using SetupWindowProc = bool (*)(const SetupWindowHost &host, int *status);
constexpr const char *setup_window_symbol = "quillon_setup_window";

} // namespace setpaths

#endif
