// The event sources of this host (the bus, child processes, signals, timers) as one descriptor, so that
// either front can sleep on it.
#ifndef QUILLON_LINUX_EVENTS_LOOP_H
#define QUILLON_LINUX_EVENTS_LOOP_H

namespace quillon {

// Readable when a source is ready, provided LoopDispatch was called since.
int LoopDescriptor();
// Serves every source that is ready, without waiting, and leaves the descriptor armed. 1 when any was served.
int LoopDispatch();
// Waits at most MILLISECONDS (-1: no limit) for a source, then serves what is ready. For a front without a
// toolkit of its own.
void LoopSleep(int milliseconds);

} // namespace quillon

#endif
