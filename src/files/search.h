// File search: the current folder, the find cache, the file databases, and folders below folders. Strings
// returned are new (malloc); the caller frees them.
#ifndef QUILLON_FILES_SEARCH_H
#define QUILLON_FILES_SEARCH_H

#include <cstddef>

#include "toolbox/bounded.h"

namespace quillon {

char *searchCurrentDirectory(const char *name);
char *searchCache(const char *name);
void addToCache(const char *name, const char *path);
void clearCache();
extern int numberOfEntries;

struct HashNode {
    char *directory, *name;
    HashNode *next;
};
extern HashNode texinputsTable, type1Table, psheadersTable, vfTable, tfmTable;

// KIND 1 to 5: TeX inputs, Type 1 fonts, PostScript headers, virtual fonts, font metrics.
char *searchDatabase(int kind, const char *name);
void read_hash_table(const char *name, HashNode *list);
void ReadTables();
// Appends every folder below FOLDER (a Unix path) to a search-path list.
void mac_expand_subdir(char ***list, std::size_t *count, const char *folder);
// NAME in: a TeX input's name; out: its absolute Unix path.
void DoFindFile(BoundedBuffer &name);
// Silent; NAME out: the file's HFS path. 1 or 0.
int DoSearchFile(BoundedBuffer &name);

} // namespace quillon

#endif
