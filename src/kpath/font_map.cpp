#include "kpath/font_map.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "console/output.h"
#include "files/paths.h"
#include "kpath/utilities.h"

namespace quillon {

namespace {

constexpr std::uint32_t bucket_count = 199;
// Kept on purpose: an entry is allocated with this size although it holds only three pointers.
constexpr std::size_t entry_size = 2388;
constexpr const char *blanks = " \t";

struct FontMapEntry {
    char *key, *value; // the alias and the real file name
    FontMapEntry *next;
};

// Adds the bytes, as signed numbers.
std::uint32_t hash_of(const char *text) {
    std::uint32_t sum = 0;
    for (; *text; text++)
        sum += static_cast<std::uint32_t>(static_cast<signed char>(*text));
    return sum % bucket_count;
}

} // namespace

struct FontMap {
    FontMapEntry *buckets[bucket_count];
};

namespace {

// Kept on purpose: an insertion drops the entries of its bucket with other aliases, so a bucket holds one
// entry, and an alias that is repeated keeps its first file name.
void insert(FontMap *map, const char *alias, const char *file_name) {
    FontMapEntry **const head = &map->buckets[hash_of(alias)];
    while (*head && std::strcmp((*head)->key, alias) != 0) {
        FontMapEntry *const passed = *head;
        *head = passed->next;
        std::free(passed->key);
        std::free(passed->value);
        std::free(passed);
    }
    if (*head)
        return;
    auto *const entry = static_cast<FontMapEntry *>(xmalloc(entry_size));
    entry->key = xstrdup(alias);
    entry->value = xstrdup(file_name);
    entry->next = nullptr;
    *head = entry;
}

// Cuts the next word out of TEXT, in place, and moves TEXT behind it. Returns null when there is none.
char *next_token(char **text) {
    char *const token = *text + std::strspn(*text, blanks);
    if (!*token)
        return nullptr;
    char *const end = token + std::strcspn(token, blanks);
    *text = *end ? end + 1 : end;
    *end = '\0';
    return token;
}

void read_map_file(FontMap *map, const char *path) {
    std::FILE *const file = xfopen(path, "r");
    unsigned line_number = 0;
    while (char *const line = read_line(file)) {
        line_number++;
        if (char *const comment = std::strrchr(line, '%'))
            *comment = '\0';
        char *rest = line;
        const char *const file_name = next_token(&rest);
        const char *const alias = file_name ? next_token(&rest) : nullptr;
        if (alias)
            insert(map, alias, file_name);
        else if (file_name)
            ml_fprintf(stderr, "%s:%u: Alias missing for filename `%s'.\n", path, line_number, file_name);
        std::free(line);
    }
    xfclose(file, path);
}

const FontMapEntry *find_entry(const FontMap *map, const char *key) {
    const FontMapEntry *entry = map->buckets[hash_of(key)];
    while (entry && std::strcmp(entry->key, key) != 0)
        entry = entry->next;
    return entry;
}

} // namespace

FontMap *map_create(char **list) {
    auto *const map = static_cast<FontMap *>(xcalloc(1, sizeof(FontMap)));
    for (; list && *list; list++) {
        char *const path = concat(*list, "texfonts.map");
        if (access(path, 4) == 0)
            read_map_file(map, path);
        std::free(path);
    }
    return map;
}

char *map_lookup(FontMap *map, const char *name) {
    const char *const suffix = find_suffix(name);
    const FontMapEntry *entry = find_entry(map, name);
    if (!entry && suffix) {
        char *const stem = remove_suffix(name);
        entry = find_entry(map, stem);
        std::free(stem);
    }
    return entry ? extend_filename(entry->value, suffix) : nullptr;
}

} // namespace quillon
