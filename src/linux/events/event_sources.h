// The event loop, the session bus and a look through the event queue, for the sources of this folder.
#ifndef QUILLON_LINUX_EVENTS_EVENT_SOURCES_H
#define QUILLON_LINUX_EVENTS_EVENT_SOURCES_H

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include "toolbox/events.h"

namespace quillon {

// The event loop, made at the first call; the program ends (status 71) when the host gives none.
sd_event *HostLoop();
// The connection to the session bus, owned here; null when none is reachable or it was lost.
sd_bus *HostBus();
// Connects to the session bus and takes the shell's names there: 1, or 0 when there is no bus or another
// shell has the name (HostBus is not null then).
int ConnectHostBus();
// True for the events in which a tool reports on its run. They are accepted only from tools that were
// launched from here, and may use the reserved places of the queue.
bool is_tool_report(OSType event_class, OSType event_id);
// 1 when TEST, called with CONTEXT, answers 1 for some queued event, else 0.
int QueueHolds(int (*test)(const EventRecord &event, const void *context), const void *context);
// Takes the first such event out of the queue: 1 and the event, or 0 when there is none.
int TakeFromQueue(int (*test)(const EventRecord &event, const void *context), const void *context,
                  EventRecord *event);

} // namespace quillon

#endif
