// The Recent files table and its menu.
#ifndef QUILLON_MENUS_RECENT_FILES_H
#define QUILLON_MENUS_RECENT_FILES_H

#include <cstdint>

#include "toolbox/bounded.h"

namespace quillon {

constexpr int recent_file_limit = 12;
// Slots 1 to 12, without gaps, the most recent first.
extern BoundedString<256> RecentFile[recent_file_limit + 1];

void SetRecentMenu();
void SaveRecentFile(const char *path);
void DeleteRecentFile(std::int16_t item);
void ShowFullRecentPaths();
void SaveRecentItems();
void Add3Items();
void DeleteAllRecentItems();

} // namespace quillon

#endif
