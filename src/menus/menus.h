// The shell makes its menus here.
#ifndef QUILLON_MENUS_MENUS_H
#define QUILLON_MENUS_MENUS_H

#include <cstdint>

#include "toolbox/menus.h"

namespace quillon {

// The menus, null until SetUpMenus.
extern MenuHandle appleMenu, fileMenu, formatMenu, optionsMenu, editMenu, buildMenu, toolMenu, infoMenu,
    fontMenu, configMenu, recentMenu, mpformatMenu, transferMenu, deleteMenu, changeMenu;
extern std::int32_t oldItem; // the checked item of the Font menu, 0 for none

// Makes the menu bar and all menus from the command table, once at start-up. The Font menu is filled when it
// is first opened.
void SetUpMenus();
// Takes every item out of a menu, the last first.
void empty_menu(MenuHandle menu);
// Enable or disable every item of a menu, in order; an empty menu is left alone.
void enable_menu(MenuHandle menu);
void disable_menu(MenuHandle menu);

} // namespace quillon

#endif
