// Events that the program sends to itself: those of a script and of the command line. They go the same way as
// events that come from the bus.
#ifndef QUILLON_TOOLBOX_RECEIVED_EVENTS_H
#define QUILLON_TOOLBOX_RECEIVED_EVENTS_H

#include <cstddef>

#include "toolbox/apple_events.h"

namespace quillon {

// Makes EVENT an event without parameters, to be filled with AEPutParamPtr.
void MakeReceivedEvent(OSType event_class, OSType event_id, AppleEvent *event);
// Appends EVENT to the event queue and takes its data over: 1, or 0 when the queue is full. Once the event
// was handled ANSWERED is called with the handler's result and its reply, which stays the queue's.
int QueueReceivedEvent(AppleEvent *event, void (*answered)(OSErr result, const AppleEvent *reply));
// Calls SEE, with CONTEXT, for each parameter in order. DATA points to SIZE bytes: for an 'fss ' those of its
// POSIX path, for all other types those of the value. A location of something that is gone is passed over.
void WalkParameters(const AppleEvent *event,
                    void (*see)(OSType keyword, OSType type, const void *data, std::size_t size,
                                void *context),
                    void *context);

} // namespace quillon

#endif
