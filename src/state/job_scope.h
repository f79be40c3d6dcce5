// One job at a time: while a job scope is open, choices and events that start work stay in the queue.
#ifndef QUILLON_STATE_JOB_SCOPE_H
#define QUILLON_STATE_JOB_SCOPE_H

namespace quillon {

// How the last command given to the dispatcher ended, for a caller on the bus.
enum JobOutcome { job_done, job_not_run, job_cancelled, job_unknown };
extern JobOutcome job_outcome;

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
