// The one event loop. The main loop, and every wait in the shell, repeats its single step, main_event.
#ifndef QUILLON_CORE_EVENT_LOOP_H
#define QUILLON_CORE_EVENT_LOOP_H

#include <cstdint>

#include "toolbox/events.h"

namespace quillon {

// Event masks: all events, for the main loop; operating-system, activate and update events, for a wait; all
// but the events of other programs, for a wait that takes keys.
enum : int { mask_every_event = -1, mask_waiting = 0x8140, mask_no_high_level = 0xFBFF };

extern EventRecord gEvent; // the event that main_event took last

// Takes one event of the kinds in MASK and handles it. Returns 1 when there was one, 0 when none came within
// 10 ticks (60 in the background). Ends the program when doQuit is set.
int main_event(int mask);
// Handles all operating-system, activate and update events that are waiting. Returns 0.
int WaitForUpdate();
// Handles EVENT by calling the procedure for its kind; an event of another kind is ignored.
void DoEvent(const EventRecord *event);
// Handles a press of the mouse button: a menu choice, or a click in a window.
void mouse_event(const EventRecord *event);
// Handles a key: a command key chooses a menu item, any other key goes to the console.
void key_event(const EventRecord *event);
// Lets the person choose a menu item, from a press of the mouse button in the menu bar, and carries it out.
void menu_choice(const EventRecord *event);
// Carries out a menu choice: the menu's id in the upper 16 bits, the item's number in the lower. An item
// without a row in the command table (0 among them) does nothing.
void do_menus(std::int32_t choice);
// Reads the current files again and enables or disables the menu items to match. Runs before a menu is shown.
void ChangeMenus();
// When the shell is in the background: asks for the person's attention and waits until the shell is in front.
// The wait also ends when the shell is told to leave during a job.
void wait_for_front();

} // namespace quillon

#endif
