// The shell looks for files in the current folder, in a cache of earlier finds, in the file databases, and in
// folders below folders. Paths are Unix paths unless a comment says otherwise. A string that is returned as
// `char *` is a new one, which the caller frees with free().
#ifndef QUILLON_FILES_SEARCH_H
#define QUILLON_FILES_SEARCH_H

#include <cstddef>
#include <cstdint>

#include "toolbox/bounded.h"

namespace quillon {

// Returns the path of the file NAME when it exists in curr_dir (an absolute NAME is taken as it is); null
// when it does not, or when NAME and curr_dir together take more than 250 bytes.
char *searchCurrentDirectory(const char *name);
// Returns the path under which the cache knows NAME, when that file still exists; null otherwise, and always
// while diagnostic lines are on (doDebug).
char *searchCache(const char *name);
// Remembers that NAME was found at PATH. Nothing happens when a text takes more than 255 bytes or 100 entries
// are in use.
void addToCache(const char *name, const char *path);
// Empties the cache.
void clearCache();
extern int numberOfEntries; // how many entries the cache holds

// A file database: a list of nodes in the file's order, which ends with a node whose three fields are 0.
// DIRECTORY and NAME are places in the list's text, where 0 is an empty string; NEXT is the number of the
// next node, 0 at the end. A list that has not been read has neither text nor nodes.
struct HashNode {
    std::uint32_t directory, name, next;
};
struct HashList {
    char *text;
    HashNode *nodes;
};
extern HashList texinputsTable, type1Table, psheadersTable, vfTable, tfmTable;

// Looks for the file NAME in the current folder, in the cache and in the database KIND: 1 TeX inputs, 2 Type
// 1 fonts, 3 PostScript headers, 4 virtual fonts, 5 font metrics. Returns its path, or null when it is in
// none of them.
char *searchDatabase(int kind, const char *name);
// Reads the database file NAME of the support folder into LIST, one of the five. When the file is missing,
// LIST is empty, the console says so and database searches are turned off.
void read_hash_table(const char *name, HashList *list);
// Opens the five database files when database searches are on; only the first call does so. A missing file is
// said in the console and turns them off. Each list is read from its file when it is first searched.
void ReadTables();
// Returns the list of the database KIND after reading it from its file; null when KIND is not 1 to 5.
const HashList *database_list(int kind);
// Forgets the databases and the cache, so that the next ReadTables opens the files anew.
void ForgetTables();
// Return the folder of a node, which ends with "/", and the name of its file. The texts belong to the list.
const char *directory_of(const HashList *list, const HashNode *node);
const char *name_of(const HashList *list, const HashNode *node);
// Appends every folder below FOLDER, at any depth, to a search-path list as add_directory does. A folder that
// begins with "." and folders whose paths take 1,024 bytes or more are left out.
void mac_expand_subdir(char ***list, std::size_t *count, const char *folder);
// Looks for the TeX input NAME, then for NAME with ".tex", along the search path and opens it in the editor.
// NAME goes out as the file's absolute path. When there is no such file, the console says so.
void DoFindFile(BoundedBuffer &name);
// Looks for a TeX input in the same way and prints nothing. NAME goes out as the file's HFS path. Returns 1,
// or 0 when there is no such file or its path does not fit.
int DoSearchFile(BoundedBuffer &name);

} // namespace quillon

#endif
