// The menus and their items, as the toolbox offers them; both fronts show these.
#include "toolbox/menus.h"

#include <map>
#include <string>
#include <vector>

namespace quillon {

struct MenuItem {
    std::string text;
    bool separator = false, enabled = true, checked = false;
    char key = 0;
    std::int16_t submenu = 0;
};

struct Menu {
    std::int16_t id = 0;
    std::string title;
    bool enabled = true;
    std::vector<MenuItem> items;
    void (*fill)(MenuHandle menu) = nullptr;
};

static std::map<std::int16_t, Menu> menus;
static std::vector<MenuHandle> bar;
static std::uint32_t changes = 0;
static MenuHandle first_keys = nullptr;
static char excepted_key = 0;

MenuHandle NewMenu(std::int16_t id, const char *title) {
    changes++;
    Menu &menu = menus[id];
    menu.id = id;
    menu.title = title;
    menu.items.clear();
    return &menu;
}

MenuHandle GetMenuHandle(std::int16_t id) {
    const auto found = menus.find(id);
    return found == menus.end() ? nullptr : &found->second;
}

void InsertMenu(MenuHandle menu) {
    changes++;
    bar.push_back(menu);
}

MenuHandle GetMenuOfBar(int index) {
    return index >= 0 && static_cast<std::size_t>(index) < bar.size() ? bar[static_cast<std::size_t>(index)]
                                                                      : nullptr;
}

std::int16_t GetMenuID(MenuHandle menu) {
    return menu->id;
}

const char *GetMenuTitle(MenuHandle menu) {
    return menu->title.c_str();
}

std::int16_t CountMenuItems(MenuHandle menu) {
    return menu ? static_cast<std::int16_t>(menu->items.size()) : static_cast<std::int16_t>(0);
}

static MenuItem *item_of(MenuHandle menu, std::int16_t item) {
    return menu && item >= 1 && item <= CountMenuItems(menu)
               ? &menu->items[static_cast<std::size_t>(item) - 1]
               : nullptr;
}

static void insert_item(MenuHandle menu, const MenuItem &item, std::int16_t after) {
    if (!menu || CountMenuItems(menu) == INT16_MAX)
        return;
    changes++;
    const std::int16_t count = CountMenuItems(menu);
    const std::int16_t place = after < 0 ? static_cast<std::int16_t>(0) : after > count ? count : after;
    menu->items.insert(menu->items.begin() + place, item);
}

void AppendMenuItemText(MenuHandle menu, const char *text) {
    InsertMenuItemText(menu, text, CountMenuItems(menu));
}

void InsertMenuItemText(MenuHandle menu, const char *text, std::int16_t after) {
    MenuItem item;
    item.text = text;
    insert_item(menu, item, after);
}

void InsertMenuSeparator(MenuHandle menu, std::int16_t after) {
    MenuItem item;
    item.text = "-";
    item.separator = true;
    item.enabled = false;
    insert_item(menu, item, after);
}

void DeleteMenuItem(MenuHandle menu, std::int16_t item) {
    if (!item_of(menu, item))
        return;
    changes++;
    menu->items.erase(menu->items.begin() + item - 1);
}

void SetMenuItemText(MenuHandle menu, std::int16_t item, const char *text) {
    MenuItem *const entry = item_of(menu, item);
    if (!entry || entry->text == text)
        return;
    changes++;
    entry->text = text;
}

int GetMenuItemText(MenuHandle menu, std::int16_t item, BoundedBuffer &text) {
    const MenuItem *const entry = item_of(menu, item);
    text.clear();
    return entry ? text.copy(entry->text) : 1;
}

int IsSeparator(MenuHandle menu, std::int16_t item) {
    const MenuItem *const entry = item_of(menu, item);
    return entry && entry->separator;
}

void CheckMenuItem(MenuHandle menu, std::int16_t item, int checked) {
    if (MenuItem *const entry = item_of(menu, item)) {
        changes += entry->checked != (checked != 0);
        entry->checked = checked != 0;
    }
}

int IsItemChecked(MenuHandle menu, std::int16_t item) {
    const MenuItem *const entry = item_of(menu, item);
    return entry && entry->checked;
}

static void set_enabled(MenuHandle menu, std::int16_t item, bool enabled) {
    if (!menu)
        return;
    bool *place = &menu->enabled;
    if (item != 0) {
        MenuItem *const entry = item_of(menu, item);
        if (!entry || entry->separator)
            return;
        place = &entry->enabled;
    }
    changes += *place != enabled;
    *place = enabled;
}

void EnableMenuItem(MenuHandle menu, std::int16_t item) {
    set_enabled(menu, item, true);
}

void DisableMenuItem(MenuHandle menu, std::int16_t item) {
    set_enabled(menu, item, false);
}

int IsMenuItemEnabled(MenuHandle menu, std::int16_t item) {
    if (!menu || item == 0)
        return menu && menu->enabled;
    const MenuItem *const entry = item_of(menu, item);
    return menu->enabled && entry && entry->enabled;
}

void SetItemCmd(MenuHandle menu, std::int16_t item, char key) {
    if (MenuItem *const entry = item_of(menu, item)) {
        changes += entry->key != key;
        entry->key = key;
    }
}

char GetItemCmd(MenuHandle menu, std::int16_t item) {
    const MenuItem *const entry = item_of(menu, item);
    return entry ? entry->key : static_cast<char>(0);
}

void SetMenuItemHierarchicalID(MenuHandle menu, std::int16_t item, std::int16_t submenu) {
    if (MenuItem *const entry = item_of(menu, item)) {
        changes++;
        entry->submenu = submenu;
    }
}

std::int16_t GetMenuItemHierarchicalID(MenuHandle menu, std::int16_t item) {
    const MenuItem *const entry = item_of(menu, item);
    return entry ? entry->submenu : static_cast<std::int16_t>(0);
}

void SetMenuFiller(MenuHandle menu, void (*fill)(MenuHandle menu)) {
    menu->fill = fill;
}

void FillMenu(MenuHandle menu) {
    if (!menu || !menu->fill)
        return;
    void (*const fill)(MenuHandle) = menu->fill;
    menu->fill = nullptr;
    fill(menu);
}

std::uint32_t MenuChangeCount() {
    return changes;
}

static char folded(char key) {
    return key >= 'a' && key <= 'z' ? static_cast<char>(key - 'a' + 'A') : key;
}

void SetMenuKeysFirst(MenuHandle menu, char except) {
    first_keys = menu;
    excepted_key = except;
}

// The choice that the key stands for in MENU, be it enabled or not; 0 when there is none.
static std::int32_t key_in_menu(Menu &menu, char key) {
    for (std::int16_t item = 1; item <= CountMenuItems(&menu); item++)
        if (GetItemCmd(&menu, item) != 0 && folded(GetItemCmd(&menu, item)) == folded(key))
            return static_cast<std::int32_t>(GetMenuID(&menu)) << 16 | item;
    return 0;
}

static std::int32_t choice_of_key(char key) {
    std::int32_t choice = 0;
    if (first_keys && folded(key) != folded(excepted_key))
        choice = key_in_menu(*first_keys, key);
    for (auto place = menus.begin(); choice == 0 && place != menus.end(); ++place)
        choice = key_in_menu(place->second, key);
    return choice;
}

std::int32_t MenuKey(char key) {
    const std::int32_t choice = choice_of_key(key);
    return IsMenuItemEnabled(GetMenuHandle(static_cast<std::int16_t>(choice >> 16)),
                             static_cast<std::int16_t>(choice & 0xFFFF))
               ? choice
               : 0;
}

int HasItsKey(MenuHandle menu, std::int16_t item) {
    const char key = GetItemCmd(menu, item);
    return key != 0 && choice_of_key(key) == (static_cast<std::int32_t>(GetMenuID(menu)) << 16 | item);
}

std::int32_t MenuSelect(const EventRecord *event) {
    const auto id = static_cast<std::int16_t>(event->message >> 16);
    const auto item = static_cast<std::int16_t>(event->message & 0xFFFF);
    return IsMenuItemEnabled(GetMenuHandle(id), item) ? static_cast<std::int32_t>(event->message) : 0;
}

void HiliteMenu(std::int16_t) {}

void DrawMenuBar() {
    changes++;
}

} // namespace quillon
