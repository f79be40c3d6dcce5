// An application as a person names it: a bundle, a desktop entry or a program.
#ifndef QUILLON_HELPERS_APPLICATION_H
#define QUILLON_HELPERS_APPLICATION_H

#include <string>
#include <vector>

#include "helpers/desktop_entry.h"

namespace helpers {

enum class Kind { none, bundle, entry, program };

struct Application {
    Kind kind = Kind::none;
    std::string path;
    DesktopEntry entry; // of a desktop entry
};

// NAME is a path, the id of a desktop entry or the name of a program.
Application find_application(const std::string &name);
// Opens DOCUMENT (empty: none) in the application in its own way. False, with what is wrong in PROBLEM, when
// the request cannot be made.
bool open_application(const Application &application, const std::string &document, std::string &problem);

} // namespace helpers

#endif
