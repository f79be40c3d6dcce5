// The Tools menu runs the companion programs, and the Configuration Files menu opens files in the editor.
#ifndef QUILLON_MENUS_TOOLS_H
#define QUILLON_MENUS_TOOLS_H

#include <cstdint>

namespace quillon {

// Carries out an item of the Tools menu. An item that stands for no program does nothing.
void DoTools(std::int16_t item);
// Opens the configuration file that the item stands for in the editor. One that is not found is not opened.
void OpenConfigFile(std::int16_t item);

} // namespace quillon

#endif
