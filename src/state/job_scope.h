// Job scopes let the shell run one job at a time: while a scope is open, menu choices and events that start
// work stay in the queue.
#ifndef QUILLON_STATE_JOB_SCOPE_H
#define QUILLON_STATE_JOB_SCOPE_H

#include <cstdint>

#include "toolbox/bounded.h"

namespace quillon {

// job_outcome says how the last command of the dispatcher (DoAppleScript) ended, for a caller on the bus: the
// tool replied, was not run, or was cancelled, or the command's first word is unknown.
enum JobOutcome { job_done, job_not_run, job_cancelled, job_unknown };
extern JobOutcome job_outcome;

// These flags say whether the viewer may open after a clean run, and the editor after an error. They are 1
// unless the program that asked for the job declined.
extern std::uint8_t job_views, job_edits;
// This flag is 1 where nobody can answer a question: in a shell without a display and without a script. There
// no viewer opens by itself unless the caller asked for it, and a missing application is named, not asked
// for.
extern std::uint8_t nobody_answers;
// The first error of the last run, as its tool reported it: the file (a Unix path, empty when there was no
// error), the line number, and the engine's message.
extern BoundedString<256> job_error_file;
extern std::int32_t job_error_line;
extern BoundedString<1024> job_error_message;
// The exit code that the last tool of the job reported, where exit_status says only whether it was 0.
extern std::int32_t job_exit_code;

// Long loops call this procedure where they could poll for events. It does nothing.
void checkEvt();

// Open and close a job scope. Scopes nest; what was held back is handed out again when the outermost one
// closes. Every begin_job needs its end_job; JobScope pairs them.
void begin_job();
void end_job();
// 1 while at least one job scope is open, else 0.
int job_running();

// Keeps a job scope open for as long as the object lives.
struct JobScope {
    JobScope() { begin_job(); }
    ~JobScope() { end_job(); }
    JobScope(const JobScope &) = delete;
    JobScope &operator=(const JobScope &) = delete;
};

} // namespace quillon

#endif
