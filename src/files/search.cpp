#include "files/search.h"

#include <cstdlib>
#include <cstring>
#include <functional>
#include <string_view>

#include "console/output.h"
#include "files/paths.h"
#include "kpath/search_paths.h"
#include "kpath/utilities.h"
#include "state/job_state.h"
#include "toolbox/windows.h"
#include "tools/processes.h"
#include "viewers/viewers.h"

namespace quillon {

namespace {

constexpr int cache_size = 100;
constexpr std::size_t current_directory_limit = 250;

struct CacheEntry {
    BoundedString<256> name, path;
};
CacheEntry cache[cache_size];
// The hashes of the names, which are quicker to compare than the names.
std::size_t cached_hashes[cache_size];

} // namespace

int numberOfEntries = 0;

char *searchCurrentDirectory(const char *name) {
    if (std::strlen(name) + curr_dir.length() > current_directory_limit)
        return nullptr;
    BoundedString<512> absolute;
    add_current_dir(absolute, name);
    if (doDebug)
        ml_printf("\nTrying <%s>.", absolute.c_str());
    if (!file_exists(absolute.c_str()))
        return nullptr;
    if (doDebug)
        ml_printf("\nFound <%s>.\n", absolute.c_str());
    return xstrdup(absolute.c_str());
}

// Kept on purpose: the cache is not used while doDebug is on, and an entry whose file no longer exists stays.
char *searchCache(const char *name) {
    if (doDebug)
        return nullptr;
    const std::size_t hash = std::hash<std::string_view>{}(name);
    for (int i = 0; i < numberOfEntries; i++)
        if (cached_hashes[i] == hash && cache[i].name == name)
            return access(cache[i].path.c_str(), 4) == 0 ? xstrdup(cache[i].path.c_str()) : nullptr;
    return nullptr;
}

void addToCache(const char *name, const char *path) {
    if (numberOfEntries >= cache_size || std::strlen(name) > 255 || std::strlen(path) > 255)
        return;
    cache[numberOfEntries].name.copy(name);
    cache[numberOfEntries].path.copy(path);
    cached_hashes[numberOfEntries] = std::hash<std::string_view>{}(name);
    numberOfEntries++;
}

void clearCache() {
    for (CacheEntry &entry : cache) {
        entry.name.clear();
        entry.path.clear();
    }
    numberOfEntries = 0;
}

namespace {

// Looks for NAME along the search path of TeX inputs, then for NAME with ".tex", which NAME keeps.
char *find_input(BoundedBuffer &name) {
    char *const found = find_path_filename(name.c_str(), search_list(slot_texinputs));
    if (found || !name.append(".tex"))
        return found;
    return find_path_filename(name.c_str(), search_list(slot_texinputs));
}

} // namespace

// A path that its buffer cannot hold is refused, and named.
static void say_too_long(const char *path) {
    ml_printf("The path \"%s\" is too long for Quillon.\n", path);
}

void DoFindFile(BoundedBuffer &name) {
    ml_printf("\nLooking for file <%s>.\n", name.c_str());
    char *const found = find_input(name);
    if (!found) {
        SysBeep(1);
        ml_printf("Input file not found.\n");
        return;
    }
    BoundedString<1024> absolute;
    add_current_dir(absolute, found);
    if (absolute.empty() || !name.copy(absolute.view())) {
        say_too_long(absolute.empty() ? found : absolute.c_str());
        std::free(found);
        return;
    }
    std::free(found);
    ml_printf("Found file <%s>.\n", name.c_str());
    open_hints.document_follows = 1;
    DoTransfer(editor);
    open_hints.document_follows = 0;
    LaunchAndSendODOC(editor, name.c_str(), 1);
}

int DoSearchFile(BoundedBuffer &name) {
    char *const found = find_input(name);
    if (!found)
        return 0;
    BoundedString<1024> absolute;
    add_current_dir(absolute, found);
    const int converted = !absolute.empty() && convert_path(absolute.c_str(), name);
    if (!converted) {
        say_too_long(absolute.empty() ? found : absolute.c_str());
        name.clear();
    }
    std::free(found);
    return converted;
}

} // namespace quillon
