// File search: the current folder, the find cache, the file databases, and folders below folders. Strings
// returned are new (malloc); the caller frees them.
#ifndef QUILLON_FILES_SEARCH_H
#define QUILLON_FILES_SEARCH_H

#include <cstddef>
#include <cstdint>

#include "toolbox/bounded.h"

namespace quillon {

char *searchCurrentDirectory(const char *name);
char *searchCache(const char *name);
void addToCache(const char *name, const char *path);
void clearCache();
extern int numberOfEntries;

// A file database: a list of nodes in the file's order, which ends with a node whose three fields are empty.
// Strings are places in the list's text, nodes are numbers; 0 stands for an empty string, and for no next
// node.
struct HashNode {
    std::uint32_t directory, name, next;
};
struct HashList {
    char *text;
    HashNode *nodes;
};
extern HashList texinputsTable, type1Table, psheadersTable, vfTable, tfmTable;

// KIND 1 to 5: TeX inputs, Type 1 fonts, PostScript headers, virtual fonts, font metrics.
char *searchDatabase(int kind, const char *name);
// Fills LIST, one of the five, from the database file NAME at once.
void read_hash_table(const char *name, HashList *list);
// Opens the five database files, once per process; a list is filled from its file when it is first searched.
void ReadTables();
// The list of KIND, filled; null for any other kind.
const HashList *database_list(int kind);
// A walk along a list, to the end node; null behind it.
const HashNode *first_node(const HashList *list);
const HashNode *next_node(const HashList *list, const HashNode *node);
const char *directory_of(const HashList *list, const HashNode *node);
const char *name_of(const HashList *list, const HashNode *node);
// Appends every folder below FOLDER (a Unix path) to a search-path list.
void mac_expand_subdir(char ***list, std::size_t *count, const char *folder);
// NAME in: a TeX input's name; out: its absolute Unix path.
void DoFindFile(BoundedBuffer &name);
// Silent; NAME out: the file's HFS path. 1 or 0.
int DoSearchFile(BoundedBuffer &name);

} // namespace quillon

#endif
