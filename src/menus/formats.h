// The Formats menu lists the formats that the engine can be run with. The Information menu shows usage texts.
#ifndef QUILLON_MENUS_FORMATS_H
#define QUILLON_MENUS_FORMATS_H

#include <cstdint>

#include "toolbox/bounded.h"

namespace quillon {

// Fills the Formats menu with the formats along the search path TEXFORMATS that fit the engine, and sets
// format_folder. A missing folder, and a search that finds no format, are said in the console.
void SetFormatMenu();
// Sets format_name to the stored format and marks its item. format_name is empty when that is not in the
// menu.
void SetDefaultFormat();
// Makes ITEM of the Formats menu the format, stores it and marks the item.
void DoFormat(std::int16_t item);
// Prints the text NAME of the bundle's resources in the console.
void ShowResourceText(const char *name);
// Prints the usage text of a tool in the console. ITEM is the tool's item, 1 to 4, of the Information menu;
// another does nothing.
void info(std::int16_t item);
// Reads a format name from the first line of the file at the Unix path PATH ("%&name" or "% format=name", at
// most 248 bytes). Returns the text of OUT, or null when there is no such name or it does not fit.
const char *GetFormatFromFile(const char *path, BoundedBuffer &out);

} // namespace quillon

#endif
