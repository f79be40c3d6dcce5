// The shell with every record that WaitNextEvent hands out written to the file that RECORDS names: "what
// message modifiers" a line. With SWALLOW set, menu choices and command keys are taken away there.
#include <cstdio>
#include <cstdlib>

#include "toolbox/events.h"

namespace quillon {

// The shell's own wait, which this program's build gave another name.
int WaitInQueue(std::uint16_t mask, EventRecord *event, std::uint32_t sleep);

static bool is_command(const EventRecord &event) {
    return (event.what == mouseDown && event.message != 0) ||
           (event.what == keyDown && event.modifiers & cmdKey);
}

int WaitNextEvent(std::uint16_t mask, EventRecord *event, std::uint32_t sleep) {
    static std::FILE *const records = std::fopen(std::getenv("RECORDS"), "w");
    if (!WaitInQueue(mask, event, sleep))
        return 0;
    if (!is_command(*event))
        return 1;
    std::fprintf(records, "%u %u %u\n", event->what, event->message, event->modifiers);
    std::fflush(records);
    if (!std::getenv("SWALLOW"))
        return 1;
    event->what = nullEvent;
    return 0;
}

} // namespace quillon
