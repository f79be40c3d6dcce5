// The font alias map, read from "texfonts.map" files.
#ifndef QUILLON_KPATH_FONT_MAP_H
#define QUILLON_KPATH_FONT_MAP_H

namespace quillon {

struct FontMap;

FontMap *map_create(char **list);
// A new string (malloc), or null.
char *map_lookup(FontMap *map, const char *name);

} // namespace quillon

#endif
