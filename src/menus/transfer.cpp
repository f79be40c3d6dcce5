#include "menus/transfer.h"

#include <cctype>
#include <cstring>

#include "console/output.h"
#include "dialogs/applications.h"
#include "files/choosers.h"
#include "files/paths.h"
#include "menus/menus.h"
#include "settings/settings.h"
#include "toolbox/apple_events.h"
#include "tools/processes.h"

namespace quillon {

BoundedString<256> MenuName[transfer_limit + 1];

namespace {

constexpr const char *add_title = "Add ...";

void key_of(int slot, BoundedBuffer &key) {
    key.format("%s%d", "TEXMENU", slot);
}

void store(int slot) {
    BoundedString<32> key;
    key_of(slot, key);
    set_str_resource(key.c_str(), MenuName[slot].c_str());
}

void rebuild() {
    for (const MenuHandle menu : {deleteMenu, changeMenu, transferMenu})
        empty_menu(menu);
    SetTransferMenu();
}

// Sets TEXT to the name that the item of an entry shows, and gives the command key, 0 for none.
char item_text(const char *entry, BoundedBuffer &text) {
    const char *const slash = std::strrchr(entry, '/');
    text.copy(slash ? slash + 1 : entry);
    const std::size_t mark = text.view().find("::");
    const char key = mark == std::string_view::npos ? '\0' : text.c_str()[mark + 2];
    if (mark != std::string_view::npos)
        text.cut(mark);
    convert_to_space(text.data());
    return key;
}

void add_items(int count) {
    BoundedString<256> text;
    for (int slot = 1; slot <= count; slot++) {
        const char key = item_text(MenuName[slot].c_str(), text);
        AppendMenuItemText(transferMenu, text.c_str());
        if (key)
            SetItemCmd(transferMenu, static_cast<std::int16_t>(slot), key);
        AppendMenuItemText(deleteMenu, text.c_str());
        AppendMenuItemText(changeMenu, text.c_str());
    }
}

void add_submenu(const char *title, MenuHandle menu) {
    AppendMenuItemText(transferMenu, title);
    SetMenuItemHierarchicalID(transferMenu, CountMenuItems(transferMenu), GetMenuID(menu));
}

// Puts ENTRY into a slot and the settings, and shows it.
void put(int slot, const char *entry) {
    MenuName[slot].copy(entry);
    store(slot);
    rebuild();
}

} // namespace

void SetTransferMenu() {
    BoundedString<32> key;
    int count = 0;
    for (BoundedBuffer &entry : MenuName)
        entry.clear();
    for (int slot = 1; slot <= transfer_limit; slot++) {
        key_of(slot, key);
        const char *const value = get_str_resource(key.c_str());
        if (!value || !MenuName[slot].copy(value))
            break;
        count = slot;
    }
    add_items(count);
    if (count > 0)
        InsertMenuSeparator(transferMenu, CountMenuItems(transferMenu));
    AppendMenuItemText(transferMenu, add_title);
    if (count == 0)
        return;
    add_submenu("Delete", deleteMenu);
    add_submenu("Change", changeMenu);
}

// Switches to the application of an entry.
static void transfer_to(int slot) {
    BoundedString<256> path;
    path.copy(MenuName[slot].view());
    const std::size_t colon = path.view().find(':');
    if (colon != std::string_view::npos)
        path.cut(colon);
    if (!path.empty())
        DoTransfer(path.c_str());
}

void DoTransferItem(std::int16_t item) {
    const std::int16_t count = CountMenuItems(transferMenu);
    if (count > 3 && item != count - 2) {
        if (item >= 1 && item <= count - 4)
            transfer_to(item);
        return;
    }
    if (count > transfer_limit + 3)
        return;
    const char *const entry = GetTransferByDialog("Choose an application");
    if (entry)
        put(count > 3 ? count - 3 : 1, entry);
}

void CutTransferItem(std::int16_t item) {
    const int count = CountMenuItems(deleteMenu);
    if (item < 1 || item > count)
        return;
    for (int slot = item; slot < count; slot++) {
        MenuName[slot].copy(MenuName[slot + 1].view());
        store(slot);
    }
    MenuName[count].clear();
    store(count);
    rebuild();
}

void ChangeTransferItem(std::int16_t item) {
    if (item < 1 || item > CountMenuItems(changeMenu))
        return;
    const char *const entry = GetTransferByDialog("Choose a Transfer application");
    if (entry)
        put(item, entry);
}

const char *GetTransferByDialog(const char *prompt) {
    static BoundedString<256> entry;
    const char *const application = GetAppByDialog(prompt, typeWildCard, 0);
    if (!application || !entry.copy(application))
        return nullptr;
    command_key_str.clear();
    GetCmdKey();
    if (command_key_str.empty())
        return entry.c_str();
    command_key_str.cut(1);
    if (!std::isgraph(static_cast<unsigned char>(command_key_str.c_str()[0]))) {
        ml_printf("A command key is a letter, a digit or a sign.\n");
        return entry.c_str();
    }
    if (entry.append("::") && entry.append(command_key_str.view()))
        return entry.c_str();
    ml_printf("The path \"%s\" is too long for Quillon.\n", application);
    return nullptr;
}

} // namespace quillon
