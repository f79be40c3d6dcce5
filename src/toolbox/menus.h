// Menu Manager: the menus' items, their texts, marks and keys. The fronts show what stands here and keep no
// menu state of their own.
//
// Items count from 1. A null menu or an item that does not exist is passed over by the procedures that change
// something; those that ask answer 0 or an empty text for it.
#ifndef QUILLON_TOOLBOX_MENUS_H
#define QUILLON_TOOLBOX_MENUS_H

#include "toolbox/bounded.h"
#include "toolbox/events.h"
#include "toolbox/types.h"

namespace quillon {

struct Menu;
using MenuHandle = Menu *;

// Makes an empty menu with that number, for the bar or to hang on an item as a submenu; a menu that has the
// number already is emptied. TITLE is copied. The menu lasts as long as the process.
MenuHandle NewMenu(std::int16_t id, const char *title);
// The menu with that number; null when there is none.
MenuHandle GetMenuHandle(std::int16_t id);
// Appends the menu to the menu bar.
void InsertMenu(MenuHandle menu);
// The menu at place INDEX (from 0) of the bar; null past the end.
MenuHandle GetMenuOfBar(int index);
// The number and the title of a menu that is not null. The title belongs to the menu.
std::int16_t GetMenuID(MenuHandle menu);
const char *GetMenuTitle(MenuHandle menu);

// The number of items of the menu.
std::int16_t CountMenuItems(MenuHandle menu);
// Add an item at the end, or behind the item AFTER (0: as the first). TEXT is copied
// and shown as it stands, whatever its characters.
void AppendMenuItemText(MenuHandle menu, const char *text);
void InsertMenuItemText(MenuHandle menu, const char *text, std::int16_t after);
// Adds a line between items, which stands for no choice; its text is "-".
void InsertMenuSeparator(MenuHandle menu, std::int16_t after);
// Takes the item out; those behind it move up.
void DeleteMenuItem(MenuHandle menu, std::int16_t item);
// Changes the text of the item; TEXT is copied.
void SetMenuItemText(MenuHandle menu, std::int16_t item, const char *text);
// Copies the item's text: 1, or 0 (and an empty text) when it does not fit.
int GetMenuItemText(MenuHandle menu, std::int16_t item, BoundedBuffer &text);
// 1 when the item is a separator, else 0.
int IsSeparator(MenuHandle menu, std::int16_t item);
// Set and ask whether the item has a check mark (1) or not (0).
void CheckMenuItem(MenuHandle menu, std::int16_t item, int checked);
int IsItemChecked(MenuHandle menu, std::int16_t item);
// Set and ask whether the item can be chosen. Item 0 stands for the whole menu; while a menu is disabled none
// of its items is enabled.
void EnableMenuItem(MenuHandle menu, std::int16_t item);
void DisableMenuItem(MenuHandle menu, std::int16_t item);
int IsMenuItemEnabled(MenuHandle menu, std::int16_t item);
// Set and ask the letter that chooses the item together with the command key; 0 for none.
void SetItemCmd(MenuHandle menu, std::int16_t item, char key);
char GetItemCmd(MenuHandle menu, std::int16_t item);
// Set and ask the number of the submenu that hangs on the item; 0 for none.
void SetMenuItemHierarchicalID(MenuHandle menu, std::int16_t item, std::int16_t submenu);
std::int16_t GetMenuItemHierarchicalID(MenuHandle menu, std::int16_t item);
// Sets the procedure that makes the items of a menu when somebody first looks into it.
void SetMenuFiller(MenuHandle menu, void (*fill)(MenuHandle menu));
// Calls the menu's filler if it has one that was not called yet. A front does so before it shows the menu.
void FillMenu(MenuHandle menu);
// A number that grows with every change of any menu, so that a front sees whether to show them anew.
std::uint32_t MenuChangeCount();

// The choice (menu id << 16 | item) that a command key stands for; 0 when there is none or its item is
// disabled. Small and capital letters are the same.
std::int32_t MenuKey(char key);
// Makes the keys of MENU win over the same keys of other menus, but for the key EXCEPT.
void SetMenuKeysFirst(MenuHandle menu, char except);
// 1 when the item has a key and it is the item that the key chooses, else 0.
int HasItsKey(MenuHandle menu, std::int16_t item);
// The choice that a mouse-down event in the menu bar made; 0 when its item is disabled.
std::int32_t MenuSelect(const EventRecord *event);
// Marks the title of a menu as in use. The fronts do that themselves, so this does nothing.
void HiliteMenu(std::int16_t id);
// Makes the front show the menus anew.
void DrawMenuBar();

} // namespace quillon

#endif
