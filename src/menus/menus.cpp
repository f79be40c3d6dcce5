#include "menus/menus.h"

#include <cstring>
#include <strings.h>

#include "core/command_table.h"
#include "menus/current_files.h"
#include "menus/recent_files.h"
#include "menus/transfer.h"
#include "settings/settings.h"
#include "toolbox/text_engine.h"

namespace quillon {

MenuHandle appleMenu, fileMenu, formatMenu, optionsMenu, editMenu, buildMenu, toolMenu, infoMenu, fontMenu,
    configMenu, recentMenu, mpformatMenu, transferMenu, deleteMenu, changeMenu;
std::int32_t oldItem = 0;

static void make_menus() {
    for (int i = 0; i < menu_row_count; i++) {
        const MenuHandle menu = NewMenu(menu_rows[i].id, menu_rows[i].title);
        if (menu_rows[i].in_bar)
            InsertMenu(menu);
    }
    const struct {
        MenuHandle &handle;
        std::int16_t id;
    } handles[] = {
        {appleMenu, menu_apple},       {fileMenu, menu_file},     {formatMenu, menu_format},
        {optionsMenu, menu_options},   {editMenu, menu_edit},     {buildMenu, menu_build},
        {toolMenu, menu_tool},         {infoMenu, menu_info},     {fontMenu, menu_font},
        {configMenu, menu_config},     {recentMenu, menu_recent}, {mpformatMenu, menu_mpformat},
        {transferMenu, menu_transfer}, {deleteMenu, menu_delete}, {changeMenu, menu_change},
    };
    for (const auto &entry : handles)
        entry.handle = GetMenuHandle(entry.id);
}

static void make_items() {
    for (int i = 0; i < command_count; i++) {
        const Command &row = command_table[i];
        if (row.item == 0)
            continue;
        const MenuHandle menu = GetMenuHandle(row.menu);
        if (std::strcmp(row.title, separator_title) == 0) {
            InsertMenuSeparator(menu, CountMenuItems(menu));
            continue;
        }
        AppendMenuItemText(menu, row.title);
        if (row.key)
            SetItemCmd(menu, row.item, row.key);
        if (row.submenu)
            SetMenuItemHierarchicalID(menu, row.item, row.submenu);
        else if (!has_effect(row))
            DisableMenuItem(menu, row.item);
        if (is_checked(row))
            CheckMenuItem(menu, row.item, 1);
    }
}

// Marks the first item of the Font menu that names the console's font, in upper or lower case.
static void CheckFontMenu() {
    BoundedString<256> text;
    const char *const font = get_str_resource("FONTNAME");
    for (std::int16_t item = 1; font && item <= CountMenuItems(fontMenu); item++) {
        GetMenuItemText(fontMenu, item, text);
        if (strcasecmp(text.c_str(), font) == 0) {
            CheckMenuItem(fontMenu, item, 1);
            oldItem = item;
            return;
        }
    }
}

// Fills the Font menu. Reading the installed fonts takes time, so this happens when the menu is first opened.
static void fill_font_menu(MenuHandle menu) {
    BoundedString<256> family;
    for (int index = 0; GetFontFamily(index, family); index++)
        AppendMenuItemText(menu, family.c_str());
    CheckFontMenu();
}

void empty_menu(MenuHandle menu) {
    while (CountMenuItems(menu) > 0)
        DeleteMenuItem(menu, CountMenuItems(menu));
}

void enable_menu(MenuHandle menu) {
    for (std::int16_t item = 1; item <= CountMenuItems(menu); item++)
        EnableMenuItem(menu, item);
}

void disable_menu(MenuHandle menu) {
    for (std::int16_t item = 1; item <= CountMenuItems(menu); item++)
        DisableMenuItem(menu, item);
}

void SetUpMenus() {
    make_menus();
    make_items();
    SetMenuFiller(fontMenu, fill_font_menu);
    SetMenuKeysFirst(transferMenu, 'Q');
    SetTransferMenu();
    SetRecentMenu();
    DrawMenuBar();
    GetMenuItemText(fileMenu, file_typeset, mylabel);
}

} // namespace quillon
