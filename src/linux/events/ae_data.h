// The data of a descriptor: its bytes or its items, and for an event its class, id and target.
#ifndef QUILLON_LINUX_EVENTS_AE_DATA_H
#define QUILLON_LINUX_EVENTS_AE_DATA_H

#include <vector>

#include "toolbox/apple_events.h"

namespace quillon {

struct AEItem {
    OSType keyword; // 0 in a list
    AEDesc value;
    mutable bool known = false; // true once somebody has read it
};

struct AEData {
    std::vector<unsigned char> bytes;
    std::vector<AEItem> items;
    OSType event_class = 0, event_id = 0;
    AEDesc target;

    // Disposes of the items and of the target.
    ~AEData();
};

// Appends an item to a descriptor that has data. The item takes VALUE's data over.
void ae_append(AEDesc *desc, OSType keyword, AEDesc value);
// Disposes of DESC and makes it an event or a reply without parameters.
void ae_make_record(AEDesc *desc, OSType event_class, OSType event_id);
// A copy of the descriptor with all that it holds; the caller disposes of it.
AEDesc ae_copy(const AEDesc &desc);

} // namespace quillon

#endif
