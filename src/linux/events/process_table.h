// The tables behind the process list. Only the files of this folder use them.
#ifndef QUILLON_LINUX_EVENTS_PROCESS_TABLE_H
#define QUILLON_LINUX_EVENTS_PROCESS_TABLE_H

#include <list>

#include "linux/events/peers.h"

namespace quillon {

extern std::list<Launched> launched_programs;
extern std::list<Peer> bus_peers;

} // namespace quillon

#endif
