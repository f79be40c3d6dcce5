// The shell with every record that WaitNextEvent hands out written to the file that RECORDS names: "what
// message modifiers" a line. With SWALLOW set, menu choices and command keys are taken away there.
#include <cstdio>
#include <cstdlib>

#include "toolbox/events.h"

int real_wait(std::uint16_t mask, quillon::EventRecord *event,
              std::uint32_t sleep) asm("__real__ZN7quillon13WaitNextEventEtPNS_11EventRecordEj");
int recording_wait(std::uint16_t mask, quillon::EventRecord *event,
                   std::uint32_t sleep) asm("__wrap__ZN7quillon13WaitNextEventEtPNS_11EventRecordEj");

namespace {

bool is_command(const quillon::EventRecord &event) {
    return (event.what == quillon::mouseDown && event.message != 0) ||
           (event.what == quillon::keyDown && event.modifiers & quillon::cmdKey);
}

} // namespace

int recording_wait(std::uint16_t mask, quillon::EventRecord *event, std::uint32_t sleep) {
    static std::FILE *const records = std::fopen(std::getenv("RECORDS"), "w");
    if (!real_wait(mask, event, sleep))
        return 0;
    if (!is_command(*event))
        return 1;
    std::fprintf(records, "%u %u %u\n", event->what, event->message, event->modifiers);
    std::fflush(records);
    if (!std::getenv("SWALLOW"))
        return 1;
    event->what = quillon::nullEvent;
    return 0;
}
