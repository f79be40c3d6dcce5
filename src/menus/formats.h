// The Formats menu: the formats that the engine can be run with.
#ifndef QUILLON_MENUS_FORMATS_H
#define QUILLON_MENUS_FORMATS_H

#include <cstdint>

#include "toolbox/bounded.h"

namespace quillon {

void SetFormatMenu();
void SetDefaultFormat();
void DoFormat(std::int16_t item);
// Shows usage text ITEM (1 to 4).
void info(std::int16_t item);
// Reads a format name from the first line of a file: OUT's text, or null.
const char *GetFormatFromFile(const char *path, BoundedBuffer &out);

} // namespace quillon

#endif
