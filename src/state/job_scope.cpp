#include "state/job_scope.h"

#include "front/front.h"
#include "toolbox/events.h"

namespace quillon {

JobOutcome job_outcome = job_done;
std::uint8_t job_views = 1, job_edits = 1;
std::uint8_t nobody_answers = 0;
BoundedString<256> job_error_file;
std::int32_t job_error_line = 0;
BoundedString<1024> job_error_message;
std::int32_t job_exit_code = 0;

static int depth = 0;

// Tells which events the queue may hand out while a job runs: 1 for all but menu choices, the events that
// start work, and command keys other than Command-period, which cancels.
static int admits(const EventRecord &event) {
    if (event.what == mouseDown)
        return event.message == 0;
    if (event.what == keyDown || event.what == autoKey)
        return !(event.modifiers & cmdKey) || (event.what == keyDown && event.message == '.');
    if (event.what != kHighLevelEvent)
        return 1;
    const OSType id = static_cast<OSType>(static_cast<std::uint16_t>(event.where.v)) << 16 |
                      static_cast<std::uint16_t>(event.where.h);
    return !(event.message == four("QUIL") &&
             (id == four("exec") || id == four("find") || id == four("sett") || id == four("gopr"))) &&
           !(event.message == four("aevt") && id == four("odoc"));
}

void checkEvt() {}

void begin_job() {
    if (depth++ > 0)
        return;
    CancelRequested(); // forgets a cancel request that was made before this job
    SetEventGate(admits);
    front->commands_admitted(0);
}

void end_job() {
    if (--depth > 0)
        return;
    SetEventGate(nullptr);
    front->commands_admitted(1);
}

int job_running() {
    return depth > 0;
}

} // namespace quillon
