// The applications that a person can name: bundles, desktop entries and programs.
#ifndef QUILLON_HELPERS_APPLICATION_H
#define QUILLON_HELPERS_APPLICATION_H

#include <string>

#include "helpers/desktop_entry.h"

namespace helpers {

enum class Kind { none, bundle, entry, program };

struct Application {
    Kind kind = Kind::none;
    std::string path;   // a POSIX path
    DesktopEntry entry; // what the entry holds, for that kind
};

// Returns the application that NAME names: a POSIX path, the id of a desktop entry or the name of a program.
// Its kind is `none` when there is no such application.
Application find_application(const std::string &name);
// Opens DOCUMENT, an absolute POSIX path or empty for none, in the application. Returns as soon as the
// request is made; false, with a sentence about the reason in PROBLEM, when it cannot be made.
bool open_application(const Application &application, const std::string &document, std::string &problem);

} // namespace helpers

#endif
