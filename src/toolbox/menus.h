// Menu Manager: the menus' items, their texts, marks and keys. The fronts show this model; they hold no menu
// state of their own.
#ifndef QUILLON_TOOLBOX_MENUS_H
#define QUILLON_TOOLBOX_MENUS_H

#include "toolbox/bounded.h"
#include "toolbox/events.h"
#include "toolbox/types.h"

namespace quillon {

struct Menu;
using MenuHandle = Menu *;

// A menu of the bar, or a submenu when it is attached to an item. TITLE is copied.
MenuHandle NewMenu(std::int16_t id, const char *title);
MenuHandle GetMenuHandle(std::int16_t id);
// Appends the menu to the menu bar.
void InsertMenu(MenuHandle menu);
// The menus of the bar, from 0; null past the end.
MenuHandle GetMenuOfBar(int index);
std::int16_t GetMenuID(MenuHandle menu);
const char *GetMenuTitle(MenuHandle menu);

// Items count from 1. A text is shown as it stands, whatever its characters.
std::int16_t CountMenuItems(MenuHandle menu);
void AppendMenuItemText(MenuHandle menu, const char *text);
void InsertMenuItemText(MenuHandle menu, const char *text, std::int16_t after);
// A line between items, which stands for no choice; its text is "-".
void InsertMenuSeparator(MenuHandle menu, std::int16_t after);
void DeleteMenuItem(MenuHandle menu, std::int16_t item);
void SetMenuItemText(MenuHandle menu, std::int16_t item, const char *text);
// Empty for an item that does not exist. 0 when the text does not fit.
int GetMenuItemText(MenuHandle menu, std::int16_t item, BoundedBuffer &text);
int IsSeparator(MenuHandle menu, std::int16_t item);
void CheckMenuItem(MenuHandle menu, std::int16_t item, int checked);
int IsItemChecked(MenuHandle menu, std::int16_t item);
// Item 0 stands for the whole menu.
void EnableMenuItem(MenuHandle menu, std::int16_t item);
void DisableMenuItem(MenuHandle menu, std::int16_t item);
int IsMenuItemEnabled(MenuHandle menu, std::int16_t item);
void SetItemCmd(MenuHandle menu, std::int16_t item, char key);
char GetItemCmd(MenuHandle menu, std::int16_t item);
void SetMenuItemHierarchicalID(MenuHandle menu, std::int16_t item, std::int16_t submenu);
std::int16_t GetMenuItemHierarchicalID(MenuHandle menu, std::int16_t item);
// FILL is called once, when the menu is first looked into.
void SetMenuFiller(MenuHandle menu, void (*fill)(MenuHandle menu));
void FillMenu(MenuHandle menu);
// Counts up at every change of any menu.
std::uint32_t MenuChangeCount();

// The choice (id << 16 | item) that a command key stands for, 0 when none or disabled. Letters in either
// case.
std::int32_t MenuKey(char key);
// The choice that a mouse-down event in the menu bar made; 0 when its item is disabled.
std::int32_t MenuSelect(const EventRecord *event);
void HiliteMenu(std::int16_t id);
void DrawMenuBar();

} // namespace quillon

#endif
