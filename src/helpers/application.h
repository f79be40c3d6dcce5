// Applications as the commands name them, and how a document is opened in one.
#ifndef QUILLON_HELPERS_APPLICATION_H
#define QUILLON_HELPERS_APPLICATION_H

#include <string>
#include <vector>

#include "common/application.h"

namespace helpers {

// Returns the application that NAME names: a POSIX path, the id of a desktop entry or the name of a program.
// Its kind is `none` when there is no such application.
common::Application find_application(const std::string &name);
// Returns the program of an application: its own path, or for a desktop entry the program of its command when
// its name is one of NAMES, else the first of NAMES that is found along PATH. Empty when there is none.
std::string program_of(const common::Application &application, const std::vector<std::string> &names);
// Opens DOCUMENT, an absolute POSIX path or empty for none, in the application. Returns as soon as the
// request is made; false, with a sentence about the reason in PROBLEM, when it cannot be made.
bool open_application(const common::Application &application, const std::string &document,
                      std::string &problem);

} // namespace helpers

#endif
