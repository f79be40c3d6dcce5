// The Transfer menu: up to 20 applications of the person's choice, each with a command key if wanted.
#ifndef QUILLON_MENUS_TRANSFER_H
#define QUILLON_MENUS_TRANSFER_H

#include <cstdint>

#include "toolbox/bounded.h"

namespace quillon {

constexpr int transfer_limit = 20;
// The entries, from slot 1 on in the order of the menu; an empty one ends the list. An entry is the Unix path
// of the application, and "::" with the command key behind it where there is one.
extern BoundedString<256> MenuName[transfer_limit + 1];

// Fills the menu and its two submenus, which are empty, from the settings.
void SetTransferMenu();
// Carry out an item of the menu and of its submenus: switch to an application or add one; take one away; put
// another in its place.
void DoTransferItem(std::int16_t item);
void CutTransferItem(std::int16_t item);
void ChangeTransferItem(std::int16_t item);
// Lets the person choose an application and a command key. Returns the entry, which holds until the next
// call; null when the chooser was cancelled or the entry does not fit.
const char *GetTransferByDialog(const char *prompt);

} // namespace quillon

#endif
