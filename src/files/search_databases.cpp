// The file databases: lists of folders and file names, read once, each with an index by name beside it.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "console/output.h"
#include "core/job_state.h"
#include "files/paths.h"
#include "files/search.h"
#include "files/streams.h"
#include "kpath/utilities.h"

namespace quillon {

HashNode texinputsTable, type1Table, psheadersTable, vfTable, tfmTable;

namespace {

constexpr int line_size = 1024;
constexpr std::uint32_t no_node = 0xFFFFFFFF;

// Nodes by name: `first` holds a list's first node of each hash, `next` the one after it, both as numbers
// into `nodes`, which are in the list's own order.
struct NameIndex {
    const HashNode *list;
    HashNode **nodes;
    std::uint32_t *first, *next;
    std::uint32_t count, room, mask;
};

NameIndex indexes[] = {
    {&texinputsTable, nullptr, nullptr, nullptr, 0, 0, 0}, {&type1Table, nullptr, nullptr, nullptr, 0, 0, 0},
    {&psheadersTable, nullptr, nullptr, nullptr, 0, 0, 0}, {&vfTable, nullptr, nullptr, nullptr, 0, 0, 0},
    {&tfmTable, nullptr, nullptr, nullptr, 0, 0, 0},
};
constexpr int kinds = sizeof indexes / sizeof indexes[0];

NameIndex *index_of(const HashNode *list) {
    for (NameIndex &index : indexes)
        if (index.list == list)
            return &index;
    return nullptr;
}

std::uint32_t hash_of(const char *name) {
    std::uint32_t hash = 2166136261u;
    for (; *name; name++)
        hash = (hash ^ static_cast<unsigned char>(*name)) * 16777619u;
    return hash;
}

void clear_index(NameIndex *index) {
    std::free(index->nodes);
    std::free(index->first);
    std::free(index->next);
    const HashNode *const list = index->list;
    *index = {};
    index->list = list;
}

void index_node(NameIndex *index, HashNode *node) {
    if (index->count == index->room) {
        index->room = index->room ? index->room * 2 : 1024;
        index->nodes = static_cast<HashNode **>(xrealloc(index->nodes, index->room * sizeof *index->nodes));
    }
    index->nodes[index->count++] = node;
}

// From the last node to the first, so that the nodes of one name are met in the list's order.
void finish_index(NameIndex *index) {
    std::uint32_t buckets = 16;
    while (buckets < index->count)
        buckets *= 2;
    index->mask = buckets - 1;
    index->first = static_cast<std::uint32_t *>(xmalloc(buckets * sizeof *index->first));
    index->next = static_cast<std::uint32_t *>(xmalloc(index->count * sizeof *index->next));
    for (std::uint32_t i = 0; i < buckets; i++)
        index->first[i] = no_node;
    for (std::uint32_t i = index->count; i-- > 0;) {
        std::uint32_t *const bucket = &index->first[hash_of(index->nodes[i]->name) & index->mask];
        index->next[i] = *bucket;
        *bucket = i;
    }
}

// Folder names are shared by the nodes that follow each other in one folder.
void clear_list(HashNode *list) {
    HashNode *node = list;
    const char *freed = nullptr;
    while (node->next) {
        HashNode *const next = node->next;
        if (node->directory && node->directory != freed) {
            freed = node->directory;
            std::free(node->directory);
        }
        std::free(node->name);
        if (node != list)
            std::free(node);
        node = next;
    }
    if (node != list)
        std::free(node);
    *list = {};
}

HashNode *append_node(HashNode *end, char *folder, const char *name) {
    end->directory = folder;
    end->name = xstrdup(name);
    end->next = static_cast<HashNode *>(xcalloc(1, sizeof *end));
    return end->next;
}

// The first node of that name whose file exists: its path in PATH and 1.
int find_in_list(const NameIndex *index, const char *name, BoundedBuffer &path) {
    if (index->count == 0)
        return 0;
    for (std::uint32_t i = index->first[hash_of(name) & index->mask]; i != no_node; i = index->next[i]) {
        const HashNode *const node = index->nodes[i];
        if (std::strcmp(node->name, name) == 0 &&
            path.format("%s%s", node->directory ? node->directory : "", node->name) &&
            access(path.c_str(), 4) == 0)
            return 1;
    }
    return 0;
}

} // namespace

void read_hash_table(const char *name, HashNode *list) {
    BoundedString<512> path;
    char line[line_size];
    char *folder = nullptr;
    int folder_is_used = 0;
    NameIndex *const index = index_of(list);
    clear_list(list);
    if (index)
        clear_index(index);
    path.format("%s/%s", haveosx ? supportFolder.c_str() : prefsFolder.c_str(), name);
    std::FILE *const file = myfopen(path.c_str(), "r");
    if (!file) {
        ml_printf("I can't find the %s database file.\n", path.c_str());
        ml_printf("Turning off database searches.\n");
        dataBaseSearch = 0;
        return;
    }
    HashNode *end = list;
    while (mfgets(line, line_size, file)) {
        // Kept on purpose: the last character goes whatever it is, a last line without a line end loses one.
        const std::size_t length = std::strlen(line);
        if (length > 0)
            line[length - 1] = '\0';
        if (line[0] == '0')
            continue;
        if (line[0] == '/') {
            if (!folder_is_used)
                std::free(folder);
            folder = xstrdup(line);
            folder_is_used = 0;
            continue;
        }
        HashNode *const node = end;
        end = append_node(end, folder, line);
        folder_is_used = 1;
        if (index)
            index_node(index, node);
    }
    if (!folder_is_used)
        std::free(folder);
    std::fclose(file);
    if (index)
        finish_index(index);
}

void ReadTables() {
    static int done = 0;
    static const struct {
        const char *name;
        HashNode *list;
    } databases[] = {{"TEXINPUTS", &texinputsTable},
                     {"DVIPSHEADERS", &psheadersTable},
                     {"TYPE1FONTS", &type1Table},
                     {"TEXFONTS", &tfmTable},
                     {"VFFONTS", &vfTable}};
    if (done)
        return;
    done = 1;
    if (dataBaseSearch == 1 && doDebug)
        ml_printf("Reading file databases.\n");
    for (const auto &database : databases)
        if (dataBaseSearch == 1)
            read_hash_table(database.name, database.list);
}

char *searchDatabase(int kind, const char *name) {
    char *found = searchCurrentDirectory(name);
    if (!found)
        found = searchCache(name);
    if (found)
        return found;
    BoundedString<256> path;
    if (kind < 1 || kind > kinds || std::strchr(name, '/') || !find_in_list(&indexes[kind - 1], name, path))
        return nullptr;
    addToCache(name, path.c_str());
    return xstrdup(path.c_str());
}

} // namespace quillon
