#include "menus/recent_files.h"

#include <cstdio>
#include <cstring>

#include "files/paths.h"
#include "files/streams.h"
#include "menus/menus.h"
#include "settings/setting_table.h"
#include "settings/settings.h"
#include "state/job_state.h"

namespace quillon {

BoundedString<256> RecentFile[recent_file_limit + 1];

static void key_of(int slot, BoundedBuffer &key) {
    key.format("%s%d", "RECENTFILE", slot);
}

static const char *switch_text() {
    return useFullPaths ? "Show file names only" : "Show full paths";
}

// Makes the text of a file's item: its HFS path, or its name alone.
static void item_text(int slot, BoundedBuffer &text) {
    const char *path = RecentFile[slot].c_str();
    const char *const slash = std::strrchr(path, '/');
    convert_path(useFullPaths || !slash ? path : slash + 1, text);
}

static void set_texts(int first, int last) {
    BoundedString<1024> text;
    for (int slot = first; slot <= last; slot++) {
        item_text(slot, text);
        SetMenuItemText(recentMenu, static_cast<std::int16_t>(slot), text.c_str());
    }
}

// Deletes the three fixed items, if the menu has files, and returns the number of files.
static int remove_fixed_items() {
    for (int i = 0; i < 3 && CountMenuItems(recentMenu) > 0; i++)
        DeleteMenuItem(recentMenu, CountMenuItems(recentMenu));
    return CountMenuItems(recentMenu);
}

void Add3Items() {
    const std::int16_t count = CountMenuItems(recentMenu);
    if (count < 1)
        return;
    InsertMenuSeparator(recentMenu, count);
    InsertMenuItemText(recentMenu, switch_text(), static_cast<std::int16_t>(count + 1));
    InsertMenuItemText(recentMenu, "Remove all items", static_cast<std::int16_t>(count + 2));
}

static int opens(const char *path) {
    std::FILE *const file = myfopen(path, "r");
    if (!file)
        return 0;
    std::fclose(file);
    return 1;
}

static void shift_up(int slot) {
    for (int i = slot; i < recent_file_limit; i++)
        RecentFile[i].copy(RecentFile[i + 1].view());
    RecentFile[recent_file_limit].clear();
}

static void empty_slots(int first) {
    for (int i = first; i <= recent_file_limit; i++)
        RecentFile[i].clear();
}

void SetRecentMenu() {
    BoundedString<1024> text;
    BoundedString<32> key;
    empty_menu(recentMenu);
    for (int i = 1; i <= recent_file_limit; i++) {
        key_of(i, key);
        const char *const value = get_str_resource(key.c_str());
        if (!value || !RecentFile[i].copy(value))
            RecentFile[i].clear();
    }
    for (int i = 1; i <= recent_file_limit && !RecentFile[i].empty();) {
        if (opens(RecentFile[i].c_str()))
            i++;
        else
            shift_up(i);
    }
    for (int i = 1; i <= recent_file_limit && !RecentFile[i].empty(); i++) {
        item_text(i, text);
        AppendMenuItemText(recentMenu, text.c_str());
    }
    Add3Items();
}

static int find_slot(const char *path, int count) {
    for (int i = 1; i <= count; i++)
        if (RecentFile[i] == path)
            return i;
    return 0;
}

void SaveRecentFile(const char *path) {
    int count = remove_fixed_items();
    int place = find_slot(path, count);
    if (place == 0) {
        count = count < recent_file_limit ? count + 1 : recent_file_limit;
        place = count;
    }
    for (int i = place; i > 1; i--)
        RecentFile[i].copy(RecentFile[i - 1].view());
    RecentFile[1].copy(path);
    empty_slots(count + 1);
    if (CountMenuItems(recentMenu) < count)
        AppendMenuItemText(recentMenu, " ");
    set_texts(1, count);
    Add3Items();
}

void DeleteRecentFile(std::int16_t item) {
    const int count = remove_fixed_items();
    if (item >= 1 && item <= count) {
        shift_up(item);
        DeleteMenuItem(recentMenu, static_cast<std::int16_t>(count));
        set_texts(1, count - 1);
    }
    Add3Items();
}

void ShowFullRecentPaths() {
    change_setting(*find_setting("USEFULLPATHS"), !useFullPaths);
    const std::int16_t count = CountMenuItems(recentMenu);
    set_texts(1, count - 3);
    SetMenuItemText(recentMenu, static_cast<std::int16_t>(count - 1), switch_text());
}

void SaveRecentItems() {
    BoundedString<32> keys[recent_file_limit];
    RecordChange changes[recent_file_limit];
    for (int i = 0; i < recent_file_limit; i++) {
        key_of(i + 1, keys[i]);
        changes[i] = {keys[i].c_str(), RecentFile[i + 1].c_str()};
    }
    set_str_resources(changes, recent_file_limit);
}

void DeleteAllRecentItems() {
    empty_slots(1);
    empty_menu(recentMenu);
}

} // namespace quillon
