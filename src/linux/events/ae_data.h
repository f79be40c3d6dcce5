// The inside of a descriptor: bytes, or items under keywords, and what an event knows of its delivery.
#ifndef QUILLON_LINUX_EVENTS_AE_DATA_H
#define QUILLON_LINUX_EVENTS_AE_DATA_H

#include <vector>

#include "toolbox/apple_events.h"

namespace quillon {

struct AEItem {
    OSType keyword; // 0 in a list
    AEDesc value;
    mutable bool known = false; // was read by the handler
};

struct AEData {
    std::vector<unsigned char> bytes;
    std::vector<AEItem> items;
    OSType event_class = 0, event_id = 0;
    AEDesc target;

    ~AEData();
};

// Appends an item that takes over VALUE's data.
void ae_append(AEDesc *desc, OSType keyword, AEDesc value);
// An empty event or reply record.
void ae_make_record(AEDesc *desc, OSType event_class, OSType event_id);
AEDesc ae_copy(const AEDesc &desc);

} // namespace quillon

#endif
