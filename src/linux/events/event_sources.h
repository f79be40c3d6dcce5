// What the back-ends of this folder share: the event loop, the session bus, and the queue's look-through.
#ifndef QUILLON_LINUX_EVENTS_EVENT_SOURCES_H
#define QUILLON_LINUX_EVENTS_EVENT_SOURCES_H

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include "toolbox/events.h"

namespace quillon {

// The loop, made at the first call.
sd_event *HostLoop();
// The session bus; null when none is reachable or it has gone.
sd_bus *HostBus();
// Connects and takes the application's own name; 0 when there is no bus.
int ConnectHostBus();
// What a tool tells of its run. It is taken only from tools that were launched from here, and finds a place
// in a full queue.
bool is_tool_report(OSType event_class, OSType event_id);
// 1 when some queued event satisfies TEST.
int QueueHolds(int (*test)(const EventRecord &event, const void *context), const void *context);

} // namespace quillon

#endif
