// The wait of the shell in a program with a toolkit: while the shell waits for an event the toolkit is
// served, and what the person does becomes event records in the shell's queue.
#ifndef QUILLON_DESKTOP_EVENT_PUMP_H
#define QUILLON_DESKTOP_EVENT_PUMP_H

#include <Qt>

#include "toolbox/events.h"

namespace quillon::desktop {

// Serves the toolkit until a source of the shell's loop was served, an event was posted here, or MILLISECONDS
// have passed (-1: no limit).
void pump_events(int milliseconds);
// Sets the procedure that is called at the start of every wait.
void set_before_wait(void (*procedure)());

// The modifier bits of an event record: Ctrl is the command key, Alt the option key.
std::uint16_t event_modifiers(Qt::KeyboardModifiers modifiers);
// Appends an event to the shell's queue, as PostEvent does, and ends the wait.
void post_event(std::uint16_t what, std::uint32_t message, std::uint16_t modifiers, Point where = {0, 0});
// Sends the shell an event of this class and id with NUMBER as its direct parameter, and ends the wait.
void post_number_event(OSType event_class, OSType id, std::int32_t number);
// Asks the shell to end, closes a modal window that is open, and ends the wait.
void post_leave();

} // namespace quillon::desktop

#endif
