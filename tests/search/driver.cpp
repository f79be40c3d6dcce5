// This program starts the shell's file search as the shell does, and then does what its arguments say.
//
//   find KIND           prints the path of each name on standard input, an empty line where there is none
//   expand REPEAT PATH  expands a path string; prints how many folders, and the nanoseconds of each time
//   lookups             looks lines "KIND NAME" up; prints how many were found, and the nanoseconds of the
//                       start and of the look-ups
//   databases           reads the five databases; prints their names, the nanoseconds, and their bytes
#include <malloc.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "files/paths.h"
#include "files/search.h"
#include "kpath/search_paths.h"
#include "kpath/utilities.h"
#include "settings/settings.h"
#include "state/job_state.h"
#include "toolbox/files.h"

using namespace quillon;

namespace {

using Clock = std::chrono::steady_clock;

long long nanoseconds_since(Clock::time_point start) {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start).count();
}

int flag(const char *key) {
    const char *const value = get_str_resource(key);
    return value && *value == '1';
}

// Sets the working folder, the settings, the search paths of MASK and the databases.
void start(std::uint32_t mask) {
    haveosx = 1;
    doDebug = 0;
    check_config();
    if (havePrefs)
        NoPrefFile();
    const char *const space = get_str_resource("SPACECHAR");
    space_char = space ? std::atoi(space) : 202;
    dataBaseSearch = flag("DATABASE");
    char here[4096];
    FSSpec spec;
    if (::getcwd(here, sizeof here) && FSPathMakeSpec(here, &spec) == noErr)
        FSSpecToUnixPath(&spec, curr_dir);
    setpaths(mask);
    ReadTables();
}

std::vector<std::string> names() {
    std::vector<std::string> all;
    for (std::string line; std::getline(std::cin, line);)
        all.push_back(line);
    return all;
}

int find(int kind) {
    start(0x7FFFFFF);
    for (const std::string &name : names()) {
        char *const found = kpse_find_file(name.c_str(), kind, 0);
        std::puts(found ? found : "");
        std::free(found);
    }
    return 0;
}

int lookups() {
    std::vector<std::pair<int, std::string>> all;
    for (const std::string &line : names())
        all.emplace_back(std::atoi(line.c_str()), line.substr(line.find(' ') + 1));
    const Clock::time_point begin = Clock::now();
    start(0x04108180);
    const long long started = nanoseconds_since(begin);
    std::size_t found = 0;
    for (const auto &[kind, name] : all) {
        char *const path = kpse_find_file(name.c_str(), kind, 0);
        found += path != nullptr;
        std::free(path);
    }
    std::printf("%zu %lld %lld\n", found, started, nanoseconds_since(begin) - started);
    return 0;
}

int expand(int repeat, const char *path) {
    doDebug = 0;
    check_config();
    std::string element = path;
    while (element.ends_with('/'))
        element.pop_back();
    for (int i = 0; i < repeat; i++) {
        char **list = nullptr;
        std::size_t count = 0;
        const Clock::time_point begin = Clock::now();
        mac_expand_subdir(&list, &count, element.c_str());
        const long long taken = nanoseconds_since(begin);
        std::printf("%zu %lld\n", count, taken);
        std::fflush(stdout);
        for (std::size_t k = 0; k < count; k++)
            std::free(list[k]);
        std::free(list);
        // The next time comes when it is asked for, so that others can be measured in between.
        if (i + 1 < repeat && std::getchar() == EOF)
            break;
    }
    return 0;
}

int databases() {
    haveosx = 1;
    doDebug = 0;
    check_config();
    if (havePrefs)
        NoPrefFile();
    dataBaseSearch = 1;
    const struct mallinfo2 before = ::mallinfo2();
    const Clock::time_point begin = Clock::now();
    ReadTables();
    std::size_t count = 0;
    for (int kind = 1; kind <= 5; kind++)
        database_list(kind);
    const long long taken = nanoseconds_since(begin);
    const struct mallinfo2 after = ::mallinfo2();
    for (int kind = 1; kind <= 5; kind++) {
        const HashList *const list = database_list(kind);
        for (const HashNode *node = list->nodes; node && node->next; node = &list->nodes[node->next])
            count++;
    }
    std::printf("%zu %lld %zu\n", count, taken,
                after.uordblks + after.hblkhd - before.uordblks - before.hblkhd);
    return 0;
}

} // namespace

int main(int count, char **words) {
    const std::string word = count > 1 ? words[1] : "";
    if (word == "find" && count == 3)
        return find(std::atoi(words[2]));
    if (word == "lookups" && count == 2)
        return lookups();
    if (word == "expand" && count == 4)
        return expand(std::atoi(words[2]), words[3]);
    if (word == "databases" && count == 2)
        return databases();
    std::fputs("search-driver find KIND | lookups | expand REPEAT PATH | databases\n", stderr);
    return 64;
}
