// Event Manager: the one queue of event records. Everything that a person or another program does reaches the
// shell as a record in this queue.
#ifndef QUILLON_TOOLBOX_EVENTS_H
#define QUILLON_TOOLBOX_EVENTS_H

#include "toolbox/types.h"

namespace quillon {

// Kinds of event. The mask bit of a kind is 1 << kind; that of high-level events is bit 10.
enum : std::uint16_t {
    nullEvent = 0,
    mouseDown = 1,
    keyDown = 3,
    autoKey = 5,
    updateEvt = 6,
    activateEvt = 8,
    osEvt = 15,
    kHighLevelEvent = 23,
};

enum : std::uint16_t {
    keyDownMask = 0x0008,
    highLevelEventMask = 0x0400,
    everyEvent = 0xFFFF,
};

enum : std::uint16_t {
    activeFlag = 0x0001,
    cmdKey = 0x0100,
    shiftKey = 0x0200,
    optionKey = 0x0800,
};

// The message of an operating-system event: a high byte of 1 means suspend or resume, bit 0 tells resume.
enum : std::uint32_t { suspendResumeMessage = 0x01000000, resumeFlag = 1 };

struct EventRecord {
    std::uint16_t what;
    // Key events: the character. Menu choices (a mouse down in the menu bar): menu id << 16 | item.
    // High-level events: the event class.
    std::uint32_t message;
    std::uint32_t when; // ticks
    // High-level events carry the event id here, packed as (v << 16 | h).
    Point where;
    std::uint16_t modifiers;
    // High-level events: the number of the received event. 0 for all other records.
    std::uint32_t serial;
};

// Takes the first queued event that MASK and the gate admit: 1 and the event, or 0 and a null event. Where
// none waits, the first call since something happened answers at once; later calls sleep at most SLEEP ticks
// (1/60 s) until something happens.
int WaitNextEvent(std::uint16_t mask, EventRecord *event, std::uint32_t sleep);
// Takes an event as WaitNextEvent does, without ever sleeping.
int GetNextEvent(std::uint16_t mask, EventRecord *event);
// Copies the first event that MASK and the gate admit and leaves it in the queue: 1, or 0 and a null event.
int EventAvail(std::uint16_t mask, EventRecord *event);
// Takes the first Command-period or Escape out of the queue: 1, or 0 when there is none.
int CheckEventQueueForUserCancel();

// Appends an event for the shell, stamped with the present tick: 1, or 0 when the queue (512 records) is
// full. A refusal is reported on standard error; the events that wait already are all kept.
int PostEvent(std::uint16_t what, std::uint32_t message, std::uint16_t modifiers, Point where);
// Appends a high-level event record for the received event number SERIAL, or for an event of the host itself
// (0): 1, or 0 as PostEvent. Events of other programs leave the last 64 places free, except a tool's reports.
int PostHighLevelEvent(OSType event_class, OSType event_id, std::uint32_t serial);
// Wakes a waiting WaitNextEvent when something happened that is no event (a reply came, a process ended).
void WakeUp();

// Sets the gate: an event for which ADMITS answers 0 stays in the queue whatever the mask. Null removes it.
void SetEventGate(int (*admits)(const EventRecord &event));
// 1 while a gate is set, else 0.
int EventsAreGated();

// The ticks (1/60 s) of the host's monotonic clock; the count runs over after some two years.
std::uint32_t TickCount();
// The longest time between the clicks of a double click: always 30 ticks.
std::uint32_t GetDblTime();

// Asks the shell to end: the window's close button, SIGTERM, log-out and the bus do. The event loop then ends
// any run, saves and exits.
void RequestLeave();
// 1 once the shell was asked to end, else 0.
int LeaveRequested();
// Asks to cancel the run in progress, also while the shell is behind other programs.
void RequestCancel();
// 1 when somebody asked to cancel since the last call, else 0; the call takes the request back.
int CancelRequested();

} // namespace quillon

#endif
