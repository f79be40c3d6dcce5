// The one event loop: every wait in the shell, and the main loop itself, is a series of these steps.
#ifndef QUILLON_CORE_EVENT_LOOP_H
#define QUILLON_CORE_EVENT_LOOP_H

#include <cstdint>

#include "toolbox/events.h"

namespace quillon {

// Masks: every event from the main loop; operating-system, activate and update events from every wait.
enum : int { mask_every_event = -1, mask_waiting = 0x8140, mask_no_high_level = 0xFBFF };

extern EventRecord gEvent;

// One step: 1 when an event was handled, 0 when the wait timed out.
int main_event(int mask);
// Drains pending operating-system, activate and update events.
int WaitForUpdate();
void DoEvent(const EventRecord *event);
void mouse_event(const EventRecord *event);
void key_event(const EventRecord *event);
void menu_choice(const EventRecord *event);
// CHOICE: menu id << 16 | item.
void do_menus(std::int32_t choice);
// Brings the menus' enabling in line with the job state; before every menu is shown.
void ChangeMenus();
// Posts the notification when the shell is in the background, and waits until it is in front.
void wait_for_front();

} // namespace quillon

#endif
