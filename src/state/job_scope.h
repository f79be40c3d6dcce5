// One job at a time: while a job scope is open, choices and events that start work stay in the queue.
#ifndef QUILLON_STATE_JOB_SCOPE_H
#define QUILLON_STATE_JOB_SCOPE_H

#include <cstdint>

#include "toolbox/bounded.h"

namespace quillon {

// How the last command given to the dispatcher ended, for a caller on the bus.
enum JobOutcome { job_done, job_not_run, job_cancelled, job_unknown };
extern JobOutcome job_outcome;

// What may follow the job that runs, as whoever asked for it wishes: the viewer after a clean run, the editor
// after an error. 1 unless the caller said otherwise.
extern std::uint8_t job_views, job_edits;
// 1 where nobody can answer a question of the shell's: a shell without a display and without a script. No
// viewer opens by itself there unless the caller asked for it, and a missing application is named, not asked
// for.
extern std::uint8_t nobody_answers;
// The first error of the last run, as its tool told it: the file (a Unix path), the line, and what the engine
// said. An empty file for none.
extern BoundedString<256> job_error_file;
extern std::int32_t job_error_line;
extern BoundedString<1024> job_error_message;

// A point where events could be polled; does nothing.
void checkEvt();

// Scopes nest; the gate opens again when the outermost ends.
void begin_job();
void end_job();
int job_running();

// Opens a job scope for a block.
struct JobScope {
    JobScope() { begin_job(); }
    ~JobScope() { end_job(); }
    JobScope(const JobScope &) = delete;
    JobScope &operator=(const JobScope &) = delete;
};

} // namespace quillon

#endif
