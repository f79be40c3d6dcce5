// The toolkit's events and the shell's: the toolkit is served while the shell waits, and what a person does
// only becomes event records in the shell's queue.
#ifndef QUILLON_DESKTOP_EVENT_PUMP_H
#define QUILLON_DESKTOP_EVENT_PUMP_H

#include <Qt>

#include "toolbox/events.h"

namespace quillon::desktop {

// Serves the toolkit until a source of the shell's loop was served, something was posted, or MILLISECONDS
// have passed (-1: no limit).
void pump_events(int milliseconds);
// Called at the start of every wait.
void set_before_wait(void (*procedure)());

std::uint16_t event_modifiers(Qt::KeyboardModifiers modifiers);
// PostEvent, which also ends the wait.
void post_event(std::uint16_t what, std::uint32_t message, std::uint16_t modifiers, Point where = {0, 0});
void post_leave();

} // namespace quillon::desktop

#endif
