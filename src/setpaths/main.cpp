// The set-up application: finds the TeX distribution and writes the preferences and the file databases.
#include <cstdio>
#include <cstring>
#include <string>
#include <unistd.h>

#include "setpaths/databases.h"
#include "setpaths/defaults.h"

namespace {

// <home>/setpaths.app/Contents/Linux/setpaths
std::string binaries_folder() {
    char path[4096];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    std::string folder(path, length > 0 ? static_cast<std::size_t>(length) : 0);
    for (int i = 0; i < 4; i++)
        folder.resize(std::min(folder.rfind('/'), folder.size()));
    return folder;
}

} // namespace

int main(int count, char **values) {
    const char *const option = count > 1 ? values[1] : "--defaults";
    if (count > 2 || (std::strcmp(option, "--defaults") != 0 && std::strcmp(option, "--databases") != 0)) {
        std::fputs("setpaths [--defaults]   set the TeX distribution up; a value that is set stays\n"
                   "setpaths --databases    rewrite the file databases\n",
                   std::strcmp(option, "--help") == 0 ? stdout : stderr);
        return std::strcmp(option, "--help") == 0 ? 0 : 64;
    }
    const std::string home = binaries_folder();
    if (std::strcmp(option, "--defaults") == 0 && !setpaths::write_defaults(home))
        return 1;
    return setpaths::write_databases(home) ? 0 : 1;
}
