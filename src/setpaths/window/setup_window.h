// The contract between the set-up and its window, which is a plug-in of the same build. The window's toolkit
// stays out of the set-up, and the set-up's work out of the window.
#ifndef QUILLON_SETPATHS_WINDOW_SETUP_WINDOW_H
#define QUILLON_SETPATHS_WINDOW_SETUP_WINDOW_H

#include <string>

#include "setpaths/defaults.h"
#include "setpaths/findings.h"
#include "setpaths/reverse_search.h"

namespace setpaths {

// What the set-up lends to its window: see preferences.h, defaults.h, findings.h, databases.h and
// reverse_search.h for the procedures.
struct SetupWindowHost {
    std::string home; // the binaries folder
    bool (*value)(const char *key, std::string *value);
    Proposal (*propose)(const std::string &home, const std::string &programs);
    std::vector<Finding> (*findings)(const Proposal &proposal);
    bool (*write_settings)(const Values &changes, const Proposal &proposal);
    bool (*write_databases)(const std::string &home); // and tells the shell that runs
    std::vector<ReverseSearch> (*reverse_searches)(const std::string &home);
    std::string (*described)(const ReverseSearch &wanted);
    bool (*write_reverse_search)(const ReverseSearch &wanted, std::string *said);
};

// Shows the window until the person closes it and puts the exit status of the program into STATUS. False at
// once when the desktop shows no windows.
using SetupWindowProc = bool (*)(const SetupWindowHost &host, int *status);
// The name of that procedure in the plug-in.
constexpr const char *setup_window_symbol = "quillon_setup_window";

} // namespace setpaths

#endif
