#include "kpath/search_paths.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "common/search_settings.h"
#include "files/paths.h"
#include "files/search.h"
#include "kpath/font_map.h"
#include "kpath/utilities.h"
#include "state/job_state.h"
#include "toolbox/bounded.h"

namespace quillon {

char **path_dirs[search_path_slots];

namespace {

// In path_dirs, waiting_list marks a list that has not been expanded yet; waiting_paths holds its path
// string.
char *waiting_list[1] = {nullptr};
char *waiting_paths[search_path_slots];

constexpr const char *preset_path = ".";
constexpr std::size_t component_limit = 255, shortened_limit = 1024;

// The path strings that were expanded so far, and their lists.
struct SavedPath {
    char *path;
    char **list;
};
SavedPath *saved_paths = nullptr;
std::size_t saved_paths_length = 0;

const char *home_folder() {
    return home ? home : ".";
}

void add_element(char ***list, std::size_t *count, const char *element) {
    char *const folder = expand_tilde(element);
    const std::size_t length = std::strlen(folder);
    if (length > 2 && std::strcmp(folder + length - 2, "//") == 0) {
        folder[length - 1] = '\0';
        add_directory(list, count, folder);
        mac_expand_subdir(list, count, folder);
    } else if (length > 0) {
        add_directory(list, count, folder);
    }
    std::free(folder);
}

// Cuts the next element out of a search path, in place, and moves PATH behind it. Returns null when there is
// none.
char *next_element(char **path) {
    *path += std::strspn(*path, ":");
    if (!**path)
        return nullptr;
    char *const element = *path;
    *path += std::strcspn(element, ":");
    if (**path)
        *(*path)++ = '\0';
    return element;
}

char **expand_path(const char *path) {
    char **list = nullptr;
    std::size_t count = 0;
    char *const copy = xstrdup(path), *rest = copy;
    while (const char *const element = next_element(&rest))
        add_element(&list, &count, element);
    std::free(copy);
    list = static_cast<char **>(xrealloc(list, (count + 1) * sizeof *list));
    list[count] = nullptr;
    return list;
}

// Returns the list of a search path, which is expanded once; null for an empty path.
char **list_of(const char *path) {
    if (!*path)
        return nullptr;
    for (std::size_t i = 0; i < saved_paths_length; i++)
        if (std::strcmp(saved_paths[i].path, path) == 0)
            return saved_paths[i].list;
    char **const list = expand_path(path);
    saved_paths =
        static_cast<SavedPath *>(xrealloc(saved_paths, (saved_paths_length + 1) * sizeof *saved_paths));
    saved_paths[saved_paths_length++] = {xstrdup(path), list};
    return list;
}

char *path_string(const char *variable, const char *preset) {
    char *const value = mygetenv(variable);
    char *const path = expand_default(value, preset);
    std::free(value);
    return path;
}

int is_set(const char *variable) {
    char *const value = mygetenv(variable);
    std::free(value);
    return value != nullptr;
}

// Returns the setting that a list is made from: the row's own when it is set, else the first set one of its
// substitutes.
const char *setting_in_use(const common::SearchSetting &row) {
    if (!is_set(row.key))
        for (const char *const name : row.instead)
            if (name && is_set(name))
                return name;
    return row.key;
}

// Returns the slot of the list whose setting is KEY, or no_slot.
constexpr int slot_of(std::string_view key) {
    for (const common::SearchSetting &row : common::search_settings)
        if (key == row.key)
            return row.slot;
    return common::no_slot;
}
static_assert(slot_of("TEXFORMATS") == slot_texformats && slot_of("TEXINPUTS") == slot_texinputs &&
              slot_of("TEXFONTS") == slot_texfonts && slot_of("TEXCONFIG") == slot_texconfig &&
              slot_of("DVIPSHEADERS") == slot_dvipsheaders && slot_of("ENCFOLDER") == slot_encfolder);

// Tells whether the expansion of a search path has to walk folders and may wait. It may not when an element
// is refused with a message, which must come at once.
int is_walk(const char *path) {
    int walks = 0;
    char *const copy = xstrdup(path), *rest = copy;
    while (const char *const element = next_element(&rest)) {
        char *const folder = expand_tilde(element);
        const int is_recursive = std::string_view(folder).ends_with("//");
        if (is_recursive)
            walks = folder[0] == '.' ? -1 : walks < 0 ? walks : 1;
        std::free(folder);
    }
    std::free(copy);
    return walks > 0;
}

// Returns NAME with each component cut to 255 bytes, and the whole to 1,024.
char *shortened(const char *name) {
    char *const result = static_cast<char *>(xmalloc(shortened_limit + 1));
    std::size_t length = 0, component = 0;
    for (; *name && length < shortened_limit; name++) {
        component = *name == '/' ? 0 : component + 1;
        if (component <= component_limit)
            result[length++] = *name;
    }
    result[length] = '\0';
    return result;
}

int is_direct(const char *name) {
    return name[0] == '/' || std::strncmp(name, "./", 2) == 0 || std::strncmp(name, "../", 3) == 0 ||
           std::strchr(name, ':') != nullptr;
}

} // namespace

void add_directory(char ***list, std::size_t *count, const char *dir) {
    const std::size_t length = std::strlen(dir);
    // The room is full, and doubled, when the count is a power of two.
    if ((*count & (*count - 1)) == 0)
        *list = static_cast<char **>(xrealloc(*list, (*count ? *count * 2 : 1) * sizeof **list));
    (*list)[(*count)++] = concat(dir, length > 0 && dir[length - 1] == '/' ? "" : "/");
}

char *expand_default(const char *path, const char *preset) {
    if (!path)
        return xstrdup(preset);
    const std::size_t length = std::strlen(path);
    if (path[0] == ':')
        return concat(preset, path);
    return length > 0 && path[length - 1] == ':' ? concat(path, preset) : xstrdup(path);
}

char *expand_tilde(const char *name) {
    if (name[0] != '~' || (name[1] && name[1] != '/'))
        return xstrdup(name);
    if (std::strncmp(name, "~/../", 5) == 0)
        return concat3(shortroot.c_str(), "/", name + 5);
    return concat(home_folder(), name + 1);
}

char **initialize_path_list(const char *variable, const char *preset) {
    char *const path = path_string(variable, preset);
    char **const list = list_of(path);
    std::free(path);
    return list;
}

void forget_paths() {
    for (int slot = 0; slot < search_path_slots; slot++) {
        path_dirs[slot] = nullptr;
        std::free(waiting_paths[slot]);
        waiting_paths[slot] = nullptr;
    }
    for (std::size_t i = 0; i < saved_paths_length; i++)
        std::free(saved_paths[i].path);
    saved_paths_length = 0;
}

void setpaths(std::uint32_t mask) {
    for (const common::SearchSetting &row : common::search_settings) {
        const int slot = row.slot;
        if (slot == common::no_slot || !(mask >> slot & 1))
            continue;
        const char *const chosen = setting_in_use(row);
        std::free(waiting_paths[slot]);
        waiting_paths[slot] = path_string(chosen, preset_path);
        path_dirs[slot] = waiting_list;
        if (!is_walk(waiting_paths[slot]))
            search_list(slot);
    }
}

char **search_list(int slot) {
    if (path_dirs[slot] == waiting_list) {
        path_dirs[slot] = list_of(waiting_paths[slot]);
        std::free(waiting_paths[slot]);
        waiting_paths[slot] = nullptr;
    }
    return path_dirs[slot];
}

char *readable(const char *name) {
    errno = 0;
    if (access(name, 4) == 0)
        return xstrdup(name);
    if (errno != ENAMETOOLONG)
        return nullptr;
    char *const shorter = shortened(name);
    if (access(shorter, 4) == 0)
        return shorter;
    std::free(shorter);
    return nullptr;
}

char *find_path_filename(const char *name, char **list) {
    char *const expanded = expand_tilde(name);
    char *found = nullptr;
    if (is_direct(expanded) || !list) {
        found = readable(expanded);
    } else {
        for (; *list && !found; list++) {
            char *const candidate = concat(*list, expanded);
            found = readable(candidate);
            std::free(candidate);
        }
    }
    std::free(expanded);
    return found;
}

char *testreadaccess(const char *name, int slot) {
    static FontMap *font_map = nullptr;
    // A slot that setpaths has not set counts as an empty list.
    static char *empty_list[1] = {nullptr};
    char *found = searchCache(name);
    if (found)
        return found;
    char **const list = search_list(slot) ? search_list(slot) : empty_list;
    found = find_path_filename(name, list);
    if (!found && slot == slot_texfonts) {
        if (!font_map)
            font_map = map_create(list);
        if (char *const alias = map_lookup(font_map, name)) {
            found = find_path_filename(alias, list);
            std::free(alias);
        }
    }
    if (found)
        addToCache(name, found);
    return found;
}

} // namespace quillon
