// The loop over the event sources of this host (the bus, child processes, signals, timers). It offers them as
// one descriptor, so that either front can sleep on it.
#ifndef QUILLON_LINUX_EVENTS_LOOP_H
#define QUILLON_LINUX_EVENTS_LOOP_H

namespace quillon {

// The descriptor, which belongs to the loop. It becomes readable when a source is ready, provided
// LoopDispatch was called since it last did.
int LoopDescriptor();
// Serves every source that is ready, without waiting, for some hundredths of a second at most, and readies
// the descriptor, which is readable at once when something is left to serve; 1 when it served any.
int LoopDispatch();
// Waits at most MILLISECONDS (-1: no limit) until a source is ready, and serves all that are. A front without
// a toolkit of its own sleeps this way.
void LoopSleep(int milliseconds);

} // namespace quillon

#endif
