// The shell keeps a table of recent files and shows it as a menu. Up to twelve items are files; the three
// below them are a separator, the switch between full paths and names, and "Remove all items".
#ifndef QUILLON_MENUS_RECENT_FILES_H
#define QUILLON_MENUS_RECENT_FILES_H

#include <cstdint>

#include "toolbox/bounded.h"

namespace quillon {

constexpr int recent_file_limit = 12;
// Unix paths in the slots 1 to 12, without gaps, the most recent first. Slot 0 is not used.
extern BoundedString<256> RecentFile[recent_file_limit + 1];

// Reads the stored recent files, drops those that cannot be opened, and makes the menu.
void SetRecentMenu();
// Puts PATH (a Unix path of up to 255 bytes) at the top of the table and the menu. When 12 files are there,
// the last one goes.
void SaveRecentFile(const char *path);
// Takes the file of ITEM out of the table and the menu; does nothing when ITEM is no file's.
void DeleteRecentFile(std::int16_t item);
// Switches between full paths and file names in the menu, and stores the choice.
void ShowFullRecentPaths();
// Stores the table, all twelve slots as one transaction.
void SaveRecentItems();
// Appends the three fixed items to a menu that has files.
void Add3Items();
// Empties the table and the menu.
void DeleteAllRecentItems();

} // namespace quillon

#endif
