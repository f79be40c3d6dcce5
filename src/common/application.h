// What a person can store as an application: a bundle, a desktop entry or a program.
#ifndef QUILLON_COMMON_APPLICATION_H
#define QUILLON_COMMON_APPLICATION_H

#include <string>

#include "common/desktop_entry.h"

namespace common {

enum class Kind { none, bundle, entry, program };

struct Application {
    Kind kind = Kind::none;
    std::string path;   // a POSIX path
    DesktopEntry entry; // what the entry holds, for that kind
};

// Returns what lies at the POSIX path PATH, slashes at its end left out. Its kind is `none` where nothing can
// be started.
Application application_at(const std::string &path);

} // namespace common

#endif
