#include "client/start.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "common/argument_list.h"
#include "common/places.h"

namespace client {

std::string contents_folder() {
    return common::above_own_program(2) + "/lib/quillon/Quillon.app/Contents";
}

std::string shell_program() {
    return contents_folder() + "/Linux/quillon-shell";
}

bool ensure_preferences(bool in_window) {
    const std::string preferences = common::preferences_path();
    if (access(preferences.c_str(), F_OK) == 0)
        return true;
    std::string program = contents_folder() + "/../../setpaths.app/Contents/Linux/setpaths";
    std::vector<std::string> words = {program};
    if (!in_window)
        words.push_back("--defaults");
    pid_t process = -1;
    if (posix_spawn(&process, program.c_str(), nullptr, nullptr, common::argument_list(words).data(),
                    environ) != 0) {
        std::fprintf(stderr, "quillon: I can't start %s: %s\n", program.c_str(), std::strerror(errno));
        return false;
    }
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return access(preferences.c_str(), F_OK) == 0;
}

int become(const std::string &program, const std::vector<std::string> &words, bool own_bus) {
    std::vector<std::string> line;
    std::string first = program;
    if (own_bus) {
        if (std::getenv(common::own_bus_variable)) {
            std::fprintf(stderr, "quillon: there is no session bus\n");
            return status_unavailable;
        }
        // What outlives the shell is put back on the bus that there was before.
        const char *const before = std::getenv("DBUS_SESSION_BUS_ADDRESS");
        setenv(common::own_bus_variable, before && *before ? before : "none", 1);
        first = "dbus-run-session";
        line = {first, "--"};
    }
    line.push_back(program);
    line.insert(line.end(), words.begin(), words.end());
    execvp(first.c_str(), common::argument_list(line).data());
    std::fprintf(stderr, "quillon: I can't start %s: %s\n", first.c_str(), std::strerror(errno));
    return status_unavailable;
}

} // namespace client
