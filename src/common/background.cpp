#include "common/background.h"

#include <cstdlib>

#include "common/places.h"
#include "common/spawn.h"

namespace common {

void start_in_background(const std::string &programs, std::vector<std::string> words) {
    // A private shell, and one with a bus of its own, serves one request.
    if (std::getenv(own_bus_variable) || std::getenv(private_preferences_variable))
        return;
    const std::string program = programs + "/quillon-background";
    words.insert(words.begin(), program);
    pid_t process = 0;
    spawn({program, std::move(words), {}, Place::own_session, nowhere, nowhere}, &process);
}

} // namespace common
