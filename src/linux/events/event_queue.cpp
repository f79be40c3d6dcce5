// The event queue. Sources only append to it, and the event loop takes from it. A full queue refuses an event
// and reports that; it never overwrites one.
#include <time.h>

#include <cstdio>

#include "front/front.h"
#include "linux/events/event_sources.h"
#include "linux/events/loop.h"
#include "linux/events/plain_programs.h"
#include "toolbox/events.h"

namespace quillon {

static constexpr unsigned queue_limit = 512;
// The places that events of other programs leave free for those of the person, the host and the tools.
static constexpr unsigned reserved_places = 64;
static EventRecord queue[queue_limit];
static unsigned queue_length = 0;
static int something_happened = 1;
static int leave_requested = 0;
static int cancel_requested = 0;
static int (*gate)(const EventRecord &event) = nullptr;

std::uint32_t TickCount() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(now.tv_sec) * 60 +
                                      static_cast<std::uint64_t>(now.tv_nsec) * 60 / 1000000000u);
}

std::uint32_t GetDblTime() {
    return 30;
}

void WakeUp() {
    something_happened = 1;
}

void SetEventGate(int (*admits)(const EventRecord &event)) {
    gate = admits;
    something_happened = 1;
}

int EventsAreGated() {
    return gate != nullptr;
}

void RequestLeave() {
    leave_requested = 1;
    something_happened = 1;
}

int LeaveRequested() {
    return leave_requested;
}

void RequestCancel() {
    cancel_requested = 1;
    something_happened = 1;
}

int CancelRequested() {
    const int requested = cancel_requested;
    cancel_requested = 0;
    return requested;
}

static int append(const EventRecord &event, unsigned limit) {
    if (queue_length >= limit) {
        std::fprintf(stderr, "quillon: the event queue is full, an event of kind %u was refused\n",
                     event.what);
        return 0;
    }
    queue[queue_length++] = event;
    something_happened = 1;
    return 1;
}

int PostEvent(std::uint16_t what, std::uint32_t message, std::uint16_t modifiers, Point where) {
    return append({what, message, TickCount(), where, modifiers, 0}, queue_limit);
}

bool is_tool_report(OSType event_class, OSType event_id) {
    return (event_class == four("aevt") && event_id == four("ansr")) ||
           (event_class == four("QUIL") && event_id == four("exit"));
}

int PostHighLevelEvent(OSType event_class, OSType event_id, std::uint32_t serial) {
    const Point packed = {static_cast<std::int16_t>(event_id >> 16),
                          static_cast<std::int16_t>(event_id & 0xFFFF)};
    return append({kHighLevelEvent, event_class, TickCount(), packed, 0, serial},
                  serial == 0 || is_tool_report(event_class, event_id) ? queue_limit
                                                                       : queue_limit - reserved_places);
}

static std::uint16_t mask_bit(std::uint16_t what) {
    // High-level events are kind 23 and answer to bit 10.
    return what == kHighLevelEvent ? static_cast<std::uint16_t>(highLevelEventMask)
                                   : static_cast<std::uint16_t>(1u << what);
}

static void remove_at(unsigned index) {
    for (unsigned i = index + 1; i < queue_length; i++)
        queue[i - 1] = queue[i];
    queue_length--;
    something_happened = 1;
}

static int find(std::uint16_t mask, unsigned *index) {
    for (unsigned i = 0; i < queue_length; i++)
        if (mask_bit(queue[i].what) & mask && (!gate || gate(queue[i]))) {
            *index = i;
            return 1;
        }
    return 0;
}

static int null_event(EventRecord *event) {
    *event = {nullEvent, 0, TickCount(), {0, 0}, 0, 0};
    return 0;
}

static int take(std::uint16_t mask, EventRecord *event) {
    unsigned index = 0;
    if (!find(mask, &index))
        return 0;
    *event = queue[index];
    remove_at(index);
    return 1;
}

int GetNextEvent(std::uint16_t mask, EventRecord *event) {
    LoopDispatch();
    return take(mask, event) ? 1 : null_event(event);
}

int EventAvail(std::uint16_t mask, EventRecord *event) {
    LoopDispatch();
    unsigned index = 0;
    if (!find(mask, &index))
        return null_event(event);
    *event = queue[index];
    return 1;
}

int WaitNextEvent(std::uint16_t mask, EventRecord *event, std::uint32_t sleep) {
    start_pending_programs();
    LoopDispatch();
    if (take(mask, event))
        return 1;
    if (mask == everyEvent && !gate && front->idle()) {
        LoopDispatch();
        return take(mask, event) ? 1 : null_event(event);
    }
    if (something_happened) {
        something_happened = 0;
        return null_event(event);
    }
    front->sleep(static_cast<int>(sleep * 1000 / 60));
    LoopDispatch();
    if (take(mask, event))
        return 1;
    something_happened = 0;
    return null_event(event);
}

int CheckEventQueueForUserCancel() {
    LoopDispatch();
    for (unsigned i = 0; i < queue_length; i++) {
        const EventRecord &event = queue[i];
        if (event.what == keyDown &&
            (event.message == 27 || (event.message == '.' && event.modifiers & cmdKey))) {
            remove_at(i);
            return 1;
        }
    }
    return 0;
}

int TakeFromQueue(int (*test)(const EventRecord &event, const void *context), const void *context,
                  EventRecord *event) {
    for (unsigned i = 0; i < queue_length; i++)
        if (test(queue[i], context)) {
            *event = queue[i];
            remove_at(i);
            return 1;
        }
    return 0;
}

int QueueHolds(int (*test)(const EventRecord &event, const void *context), const void *context) {
    for (unsigned i = 0; i < queue_length; i++)
        if (test(queue[i], context))
            return 1;
    return 0;
}

} // namespace quillon
