// A file database is a list of folders and file names, with an index by name. Start-up opens the files, so
// that it can report a missing one; each is read when it is first searched.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string_view>

#include "common/search_settings.h"
#include "console/output.h"
#include "files/paths.h"
#include "files/search.h"
#include "files/streams.h"
#include "kpath/utilities.h"
#include "state/job_state.h"

namespace quillon {

HashList texinputsTable, type1Table, psheadersTable, vfTable, tfmTable;

namespace {

// A longer line counts as several, as when mfgets reads it into a buffer of 1,024 bytes.
constexpr std::size_t line_limit = 1022;
constexpr std::size_t text_limit = 0xFFFF0000;
constexpr std::uint32_t no_node = 0xFFFFFFFF;
constexpr int kinds = common::databases_end - 1;

// The index is a hash table of MASK + 1 buckets: FIRST holds the first node of each bucket, and CHAIN, for
// each node, the next one in its bucket. COUNT does not include the end node.
struct Database {
    common::Database kind;
    HashList *list;
    std::FILE *awaited; // the open file, until it is read; else null
    std::uint32_t *first, *chain;
    std::uint32_t count, room, mask;
};

// The databases stand in the order of their kind numbers, which begin at 1.
Database databases[kinds] = {
    {common::tex_inputs, &texinputsTable, nullptr, nullptr, nullptr, 0, 0, 0},
    {common::type1_fonts, &type1Table, nullptr, nullptr, nullptr, 0, 0, 0},
    {common::postscript_headers, &psheadersTable, nullptr, nullptr, nullptr, 0, 0, 0},
    {common::virtual_fonts, &vfTable, nullptr, nullptr, nullptr, 0, 0, 0},
    {common::font_metrics, &tfmTable, nullptr, nullptr, nullptr, 0, 0, 0},
};

Database *database_of(const HashList *list) {
    for (Database &database : databases)
        if (database.list == list)
            return &database;
    return nullptr;
}

std::uint32_t hash_of(std::string_view name) {
    return static_cast<std::uint32_t>(std::hash<std::string_view>{}(name));
}

void clear_database(Database *database) {
    if (database->awaited)
        std::fclose(database->awaited);
    std::free(database->list->text);
    std::free(database->list->nodes);
    std::free(database->first);
    std::free(database->chain);
    *database->list = {};
    *database = {database->kind, database->list, nullptr, nullptr, nullptr, 0, 0, 0};
}

// Reads FILE into a new block that begins with an empty string, and returns in SIZE how many bytes are
// filled.
char *read_whole(std::FILE *file, std::size_t *size) {
    std::size_t room = 65536;
    if (std::fseek(file, 0, SEEK_END) == 0) {
        const long length = std::ftell(file);
        room = std::max(room, length > 0 ? std::min(static_cast<std::size_t>(length), text_limit) + 2 : 0);
        std::rewind(file);
    }
    char *text = static_cast<char *>(xmalloc(room));
    text[0] = '\0';
    *size = 1;
    // The file may have grown since its length was taken.
    while (const std::size_t count = std::fread(text + *size, 1, room - *size, file)) {
        *size += count;
        if (*size >= text_limit)
            break;
        if (*size == room)
            text = static_cast<char *>(xrealloc(text, room *= 2));
    }
    return text;
}

void make_room(Database *database, std::uint32_t room) {
    HashList *const list = database->list;
    database->room = room;
    list->nodes = static_cast<HashNode *>(xrealloc(list->nodes, room * sizeof *list->nodes));
    database->chain = static_cast<std::uint32_t *>(xrealloc(database->chain, room * sizeof *database->chain));
}

// Appends a node. CHAIN holds the nodes' hashes until finish_list builds the index.
void add_node(Database *database, const char *folder, const char *name, std::size_t length) {
    const char *const text = database->list->text;
    const std::uint32_t number = database->count++;
    if (database->count == database->room)
        make_room(database, database->room * 2);
    database->list->nodes[number] = {static_cast<std::uint32_t>(folder - text),
                                     static_cast<std::uint32_t>(name - text), number + 1};
    database->chain[number] = hash_of({name, length});
}

// Appends the end node and builds the index. It goes from the last node to the first, so that a search meets
// the nodes of one name in the list's order.
void finish_list(Database *database) {
    std::uint32_t buckets = 16;
    while (buckets < database->count)
        buckets *= 2;
    make_room(database, database->count + 1);
    database->list->nodes[database->count] = {};
    database->mask = buckets - 1;
    database->first = static_cast<std::uint32_t *>(xmalloc(buckets * sizeof *database->first));
    std::fill_n(database->first, buckets, no_node);
    for (std::uint32_t i = database->count; i-- > 0;) {
        std::uint32_t *const bucket = &database->first[database->chain[i] & database->mask];
        database->chain[i] = *bucket;
        *bucket = i;
    }
}

// These flags say whether a text holds carriage returns and zero bytes, which take extra work.
struct Peculiarities {
    int returns, zeros;
};

// Cuts the end off the line at TEXT, in place. Returns the line's length, and in NEXT where the next line
// begins.
//
// Kept on purpose: the last character is removed whatever it is, so a last line without a line end loses one,
// and so does each piece of a long line. A carriage return is skipped only after a line feed.
std::size_t cut_line(char *text, std::size_t left, const Peculiarities &has, char **next) {
    const std::size_t seen = std::min(left, line_limit);
    char *end = static_cast<char *>(std::memchr(text, '\n', seen));
    if (has.returns)
        if (void *const found = std::memchr(text, '\r', end ? static_cast<std::size_t>(end - text) : seen))
            end = static_cast<char *>(found);
    std::size_t length = end ? static_cast<std::size_t>(end - text) : seen - 1;
    *next = end ? end + 1 : text + seen;
    if (end && *end == '\n' && *next < text + left && **next == '\r')
        ++*next;
    if (has.zeros)
        if (const void *const zero = std::memchr(text, '\0', end ? length : seen)) {
            length = static_cast<std::size_t>(static_cast<const char *>(zero) - text);
            length -= length > 0;
        }
    text[length] = '\0';
    return length;
}

// Cuts the list's text, of which SIZE bytes are filled, into lines and makes the nodes.
void cut_lines(Database *database, std::size_t size) {
    char *const text = database->list->text;
    const char *folder = text;
    const Peculiarities has = {std::memchr(text + 1, '\r', size - 1) != nullptr,
                               std::memchr(text + 1, '\0', size - 1) != nullptr};
    make_room(database, 1024);
    for (char *line = text + 1, *next; line < text + size; line = next) {
        const std::size_t length = cut_line(line, static_cast<std::size_t>(text + size - line), has, &next);
        if (line[0] == '/')
            folder = line;
        else if (line[0] != '0')
            add_node(database, folder, line, length);
    }
}

// Opens a database file for reading. When that fails, says so and turns database searches off.
std::FILE *open_database(const char *name) {
    BoundedString<512> path;
    path.format("%s/%s", haveosx ? supportFolder.c_str() : prefsFolder.c_str(), name);
    std::FILE *const file = myfopen(path.c_str(), "r");
    if (!file) {
        ml_printf("I can't find the %s database file.\n", path.c_str());
        ml_printf("Turning off database searches.\n");
        dataBaseSearch = 0;
    }
    return file;
}

void fill_list(Database *database, std::FILE *file) {
    std::size_t size;
    database->list->text = read_whole(file, &size);
    std::fclose(file);
    cut_lines(database, size);
    finish_list(database);
}

// Finds the first node of that name whose file exists. Returns 1 and the file's path, or 0.
int find_in_list(const Database *database, const char *name, BoundedBuffer &path) {
    if (database->count == 0)
        return 0;
    const std::uint32_t hash = hash_of({name, std::strlen(name)});
    for (std::uint32_t i = database->first[hash & database->mask]; i != no_node; i = database->chain[i]) {
        const HashNode *const node = &database->list->nodes[i];
        if (std::strcmp(name_of(database->list, node), name) != 0)
            continue;
        const char *const folder = directory_of(database->list, node);
        if (!path.copy(folder) || !path.append(name))
            ml_printf("The path of file <%s%s> is too long.\n", folder, name);
        else if (access(path.c_str(), 4) == 0)
            return 1;
    }
    return 0;
}

} // namespace

const char *directory_of(const HashList *list, const HashNode *node) {
    return list->text + node->directory;
}

const char *name_of(const HashList *list, const HashNode *node) {
    return list->text + node->name;
}

void read_hash_table(const char *name, HashList *list) {
    Database *const database = database_of(list);
    if (!database)
        return;
    clear_database(database);
    if (std::FILE *const file = open_database(name))
        fill_list(database, file);
}

static int done = 0; // 1 when the files were opened

void ForgetTables() {
    for (Database &database : databases)
        clear_database(&database);
    clearCache();
    done = 0;
}

void ReadTables() {
    static const HashList *const in_order[] = {&texinputsTable, &psheadersTable, &type1Table, &tfmTable,
                                               &vfTable};
    if (done)
        return;
    done = 1;
    if (dataBaseSearch == 1 && doDebug)
        ml_printf("Reading file databases.\n");
    for (const HashList *const list : in_order) {
        Database *const database = database_of(list);
        if (dataBaseSearch == 1)
            database->awaited = open_database(common::database_setting(database->kind)->key);
    }
}

const HashList *database_list(int kind) {
    if (kind < 1 || kind > kinds)
        return nullptr;
    Database *const database = &databases[kind - 1];
    if (std::FILE *const file = database->awaited) {
        database->awaited = nullptr;
        fill_list(database, file);
    }
    return database->list;
}

char *searchDatabase(int kind, const char *name) {
    char *found = searchCurrentDirectory(name);
    if (!found)
        found = searchCache(name);
    if (found)
        return found;
    BoundedString<256> path;
    if (std::strchr(name, '/') || !database_list(kind) || !find_in_list(&databases[kind - 1], name, path))
        return nullptr;
    addToCache(name, path.c_str());
    return xstrdup(path.c_str());
}

} // namespace quillon
