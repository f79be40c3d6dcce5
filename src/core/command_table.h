// The command table: a menu command is one row. Dispatch, the menus, the documentation and the tests read it.
#ifndef QUILLON_CORE_COMMAND_TABLE_H
#define QUILLON_CORE_COMMAND_TABLE_H

#include <cstdint>

namespace quillon {

enum : std::int16_t {
    menu_apple = 128,
    menu_file = 129,
    menu_format = 130,
    menu_options = 131,
    menu_edit = 133,
    menu_build = 134,
    menu_tool = 135,
    menu_info = 137,
    menu_font = 139,
    menu_config = 140,
    menu_recent = 142,
    menu_mpformat = 143,
    menu_transfer = 200,
    menu_delete = 201,
    menu_change = 202,
};

struct MenuRow {
    std::int16_t id;
    const char *title;
    int in_bar; // 0: a submenu
};

struct Command {
    std::int16_t menu;
    std::int16_t item; // 0: every item of a menu whose items are made while the shell runs
    const char *title; // null for item 0; "(-" for a separator
    char key;          // command key, 0 for none
    std::int16_t submenu;
    void (*procedure)(std::int16_t item); // null: disabled
    int (*enabled)();                     // null: always, when there is a procedure
    int (*marked)();                      // the mark at start-up; null for none
};

extern const MenuRow menu_rows[];
extern const int menu_row_count;
extern const Command command_table[];
extern const int command_count;

// The row of that choice, the menu's item-0 row when it has no row of its own; null when there is none.
const Command *find_command(std::int16_t menu, std::int16_t item);

} // namespace quillon

#endif
