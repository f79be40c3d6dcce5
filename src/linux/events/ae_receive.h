// Events that arrive from the bus: queued in the bus's callback, handled from the event loop, answered then.
#ifndef QUILLON_LINUX_EVENTS_AE_RECEIVE_H
#define QUILLON_LINUX_EVENTS_AE_RECEIVE_H

#include <systemd/sd-bus.h>

#include <functional>
#include <string>

#include "toolbox/apple_events.h"

namespace quillon {

// Takes a call of the method Event of org.quillon.App1: the event is queued, the answer comes when it has
// been handled.
int receive_application_event(sd_bus_message *call, sd_bus_error *error);

// Queues EVENT (its data is taken over). ANSWER is called once with the handler's result and the reply, and
// with the call's message, of which a reference is kept (null for an event from within). 0 when the queue is
// full.
using AnswerProcedure = std::function<void(sd_bus_message *call, OSErr result, const AppleEvent *reply)>;
int queue_received_event(AppleEvent event, sd_bus_message *call, AnswerProcedure answer);

// The bus name of the client whose command runs now, where that client can answer the tool; empty for none.
const std::string &answering_client();

// Hands EVENT to its handler at once, as an event from this program itself.
OSErr dispatch_event(const AppleEvent *event, AppleEvent *reply);

// 1 when an event from the bus peer OWNER waits in the queue.
int events_wait_from(const char *owner);

// How an 'exec' ended beyond its reply, for the caller on the bus; see AESetCallOutcome.
OSType call_outcome();

} // namespace quillon

#endif
