// The command `quillon clean --snapshots`: forgets every preamble.
#ifndef QUILLON_CLIENT_CLEAN_SNAPSHOTS_H
#define QUILLON_CLIENT_CLEAN_SNAPSHOTS_H

namespace client {

// Empties the folder of the snapshots and says how many there were. A run that has just been offered one
// executes its preamble. Returns the exit status: 0, or 1 when something could not be removed.
int clean_snapshots();

} // namespace client

#endif
