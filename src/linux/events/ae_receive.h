// Events that arrive from the bus. The bus's callback only queues them, the event loop handles them.
#ifndef QUILLON_LINUX_EVENTS_AE_RECEIVE_H
#define QUILLON_LINUX_EVENTS_AE_RECEIVE_H

#include <systemd/sd-bus.h>

#include <functional>
#include <string>

#include "toolbox/apple_events.h"

namespace quillon {

// Takes a call of the method Event of org.quillon.App1: it queues the event, which is answered once it was
// handled. A negative errno value, with ERROR set, when the call is malformed or refused.
int receive_application_event(sd_bus_message *call, sd_bus_error *error);

// Appends EVENT to the event queue and takes its data over: 1, or 0 when the queue is full. ANSWER is called
// once, with the handler's result, the reply, and CALL, which is kept until then (null for an event from
// within).
using AnswerProcedure = std::function<void(sd_bus_message *call, OSErr result, const AppleEvent *reply)>;
int queue_received_event(AppleEvent event, sd_bus_message *call, AnswerProcedure answer);

// Takes back the commands of the client with the unique bus name SENDER: those that wait are answered as
// cancelled, and one that runs is cancelled. Returns how many there were.
int cancel_commands_of(const char *sender);

// 1 while a command runs that a client gave with options of its own, so that no person is asked for anything.
int client_command_runs();
// The bus name of the client whose command runs now when it offered to answer the tool's questions, else "".
const std::string &answering_client();

// Calls the handler of EVENT at once; the result is the handler's, errAEEventNotHandled when there is none.
OSErr dispatch_event(const AppleEvent *event, AppleEvent *reply);

// 1 when an event from the program with the unique bus name OWNER waits in the queue, else 0.
int events_wait_from(const char *owner);

// What the last handler told with AESetCallOutcome; 'none' when it told nothing.
OSType call_outcome();

} // namespace quillon

#endif
