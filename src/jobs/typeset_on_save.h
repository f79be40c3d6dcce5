// Typeset on save: while the setting is on, the files of the current TeX file are watched, and the command
// "Typeset" is chosen when one was saved.
#ifndef QUILLON_JOBS_TYPESET_ON_SAVE_H
#define QUILLON_JOBS_TYPESET_ON_SAVE_H

namespace quillon {

// The main loop calls this before it waits. Begins and ends the watch as the setting and the current TeX file
// say, and posts the event of the command when a file was saved.
void watch_step();
// Tell that the run of an engine begins, and that it has ended.
void watch_run_begins();
void watch_run_ended();

} // namespace quillon

#endif
