// The font alias map holds other names of font files, which the files "texfonts.map" list.
#ifndef QUILLON_KPATH_FONT_MAP_H
#define QUILLON_KPATH_FONT_MAP_H

namespace quillon {

struct FontMap;

// Reads the file texfonts.map of each folder of LIST (null-terminated, Unix paths that end with "/"; may be
// null) into a new map, which is never freed. A bad line is reported in the console.
FontMap *map_create(char **list);
// Returns the file name for the alias NAME in a new string that the caller frees with free(), or null. NAME
// without its suffix is tried too. The file name gets the suffix of NAME when it has none of its own.
char *map_lookup(FontMap *map, const char *name);

} // namespace quillon

#endif
