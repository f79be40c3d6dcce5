// Event Manager: the one queue of event records that everything a person or another program does goes
// through.
#ifndef QUILLON_TOOLBOX_EVENTS_H
#define QUILLON_TOOLBOX_EVENTS_H

#include "toolbox/types.h"

namespace quillon {

// Kinds of event. The mask bit of a kind is 1 << kind.
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

// Message of an operating-system event: the high byte 1 is suspend or resume, bit 0 says resume.
enum : std::uint32_t { suspendResumeMessage = 0x01000000, resumeFlag = 1 };

struct EventRecord {
    std::uint16_t what;
    // Key events: the character. Menu choices (a mouse down in the menu bar): menu id << 16 | item.
    // High-level events: the event class.
    std::uint32_t message;
    std::uint32_t when;
    // High-level events carry the event id here, packed as (v << 16 | h).
    Point where;
    std::uint16_t modifiers;
    // High-level events: which of the received events this is. 0 for all others.
    std::uint32_t serial;
};

// Takes the first queued event that MASK admits: 1 and the event, or 0 and a null event. The first call that
// finds nothing after something happened answers at once; the next sleeps, at most SLEEP ticks (1/60 s),
// until something happens.
int WaitNextEvent(std::uint16_t mask, EventRecord *event, std::uint32_t sleep);
// As WaitNextEvent, without sleeping.
int GetNextEvent(std::uint16_t mask, EventRecord *event);
// Looks, taking nothing and not sleeping.
int EventAvail(std::uint16_t mask, EventRecord *event);
// Command-period or Escape in the queue: takes it and answers 1.
int CheckEventQueueForUserCancel();

// Appends an event for the shell. 0 when the queue is full; that is said on standard error, nothing is lost
// that was queued before.
int PostEvent(std::uint16_t what, std::uint32_t message, std::uint16_t modifiers, Point where);
// A high-level event record for the received event SERIAL (see apple_events.h).
int PostHighLevelEvent(OSType event_class, OSType event_id, std::uint32_t serial);
// Says that something happened that is no event of its own (a reply came, a process ended): a wait wakes.
void WakeUp();

// While ADMITS answers 0 for an event, that event stays in the queue whatever the mask. Null admits
// everything.
void SetEventGate(int (*admits)(const EventRecord &event));
int EventsAreGated();

std::uint32_t TickCount();
std::uint32_t GetDblTime();

// What the host or the person has asked outside the queue: the window's close button, SIGTERM, log-out, the
// bus. The loop ends any run, saves and exits.
void RequestLeave();
int LeaveRequested();
// Another program asks to cancel the run in progress, wherever the shell stands on the screen.
// CancelRequested takes the request.
void RequestCancel();
int CancelRequested();

} // namespace quillon

#endif
