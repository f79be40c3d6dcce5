// Events put into the queue from within: what a script sends takes the way of one that came from the bus.
#ifndef QUILLON_TOOLBOX_RECEIVED_EVENTS_H
#define QUILLON_TOOLBOX_RECEIVED_EVENTS_H

#include <cstddef>

#include "toolbox/apple_events.h"

namespace quillon {

// An event without parameters, to be filled with AEPutParamPtr.
void MakeReceivedEvent(OSType event_class, OSType event_id, AppleEvent *event);
// Queues EVENT, taking over its data. ANSWERED is called with its result and reply when it has been handled.
int QueueReceivedEvent(AppleEvent *event, void (*answered)(OSErr result, const AppleEvent *reply));
// Calls SEE for each parameter, in order: 'fss ' as its POSIX path, 'TEXT' and all other types as their
// bytes.
void WalkParameters(const AppleEvent *event,
                    void (*see)(OSType keyword, OSType type, const void *data, std::size_t size,
                                void *context),
                    void *context);

} // namespace quillon

#endif
