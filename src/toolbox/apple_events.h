// Apple Event Manager: events between programs, with their parameters and replies.
#ifndef QUILLON_TOOLBOX_APPLE_EVENTS_H
#define QUILLON_TOOLBOX_APPLE_EVENTS_H

#include <cstddef>

#include "toolbox/events.h"
#include "toolbox/types.h"

namespace quillon {

enum : OSType {
    keyDirectObject = four("----"),
    keyErrorString = four("errs"),
    keyMissedKeywordAttr = four("miss"),
    keyEventIDAttr = four("evid"),
    typeNull = four("null"),
    typeChar = four("TEXT"),
    typeFSS = four("fss "),
    typeLongInteger = four("long"),
    typeAEList = four("list"),
    typeAppleEvent = four("aevt"),
    typeProcessSerialNumber = four("psn "),
    typeApplSignature = four("sign"),
    typeType = four("type"),
    typeWildCard = four("****"),
};

enum : std::int32_t {
    kAENoReply = 1,
    kAEQueueReply = 2,
    kAEWaitReply = 3,
    kAECanInteract = 0x20,
    kAEAlwaysInteract = 0x30,
    kAECanSwitchLayer = 0x40,
    kAEDontRecord = 0x1000,
    kAEDefaultTimeout = -1,
    kNoTimeOut = -2,
};
enum : std::int16_t { kAENormalPriority = 0, kAEHighPriority = 1, kAutoGenerateReturnID = -1 };
enum : std::int32_t { kAnyTransactionID = 0, kAEInteractWithAll = 2 };

struct AEData; // the bytes of a descriptor, or its items; owned by the descriptor

struct AEDesc {
    OSType descriptorType = typeNull;
    AEData *data = nullptr;
};
using AppleEvent = AEDesc;
using AEDescList = AEDesc;

using AEEventHandler = OSErr (*)(const AppleEvent *event, AppleEvent *reply, std::int32_t refcon);
// Called while a send waits. SLEEP (ticks) may be set; a result of 1 abandons the wait.
using AEIdleProc = int (*)(EventRecord *event, std::uint32_t *sleep);

// A descriptor of SIZE bytes of DATA. 'fss ' takes an FSSpec, 'psn ' a ProcessSerialNumber, 'sign' an OSType,
// 'long' an int32, 'TEXT' bytes without a final NUL.
OSErr AECreateDesc(OSType type, const void *data, std::size_t size, AEDesc *result);
OSErr AEDisposeDesc(AEDesc *desc);
OSErr AEDuplicateDesc(const AEDesc *desc, AEDesc *result);
// TARGET is a 'psn ' or 'sign' descriptor.
OSErr AECreateAppleEvent(OSType event_class, OSType event_id, const AEDesc *target, std::int16_t return_id,
                         std::int32_t transaction_id, AppleEvent *result);
OSErr AECreateList(AEDescList *result);
OSErr AEPutDesc(AEDescList *list, std::int32_t index, const AEDesc *desc);
OSErr AECountItems(const AEDescList *list, std::int32_t *count);
// INDEX from 1. ACTUAL (may be null) is the size of the data; at most ROOM bytes are stored.
OSErr AEGetNthPtr(const AEDescList *list, std::int32_t index, OSType wanted, void *data, std::size_t room,
                  std::size_t *actual);
OSErr AEPutParamPtr(AppleEvent *event, OSType keyword, OSType type, const void *data, std::size_t size);
OSErr AEPutParamDesc(AppleEvent *event, OSType keyword, const AEDesc *desc);
// errAEDescNotFound when there is no such parameter, errAECoercionFail when it has another type. Reading a
// parameter marks it as known. ACTUAL as in AEGetNthPtr.
OSErr AEGetParamPtr(const AppleEvent *event, OSType keyword, OSType wanted, void *data, std::size_t room,
                    std::size_t *actual);
OSErr AEGetParamDesc(const AppleEvent *event, OSType keyword, OSType wanted, AEDesc *result);
// 'miss': found (0) when a parameter was never read. 'evid' as 'type': the event id.
OSErr AEGetAttributePtr(const AppleEvent *event, OSType keyword, OSType wanted, void *data, std::size_t room);

// Sends, and with kAEWaitReply waits: IDLE gets every update, activate and operating-system event and a null
// event when there is none; events from other programs that start no work are handled in the wait. TIMEOUT in
// ticks. Results: 0; -600 unknown process; -609 the peer went; -1711 abandoned by IDLE; -1712 time-out;
// -1708 the target cannot take such an event.
OSErr AESend(const AppleEvent *event, AppleEvent *reply, std::int32_t mode, std::int16_t priority,
             std::int32_t timeout, AEIdleProc idle);

OSErr AEInstallEventHandler(OSType event_class, OSType event_id, AEEventHandler handler, std::int32_t refcon);
OSErr AESetInteractionAllowed(std::int32_t level);
// Handles the received event of a high-level event record and sends its reply.
OSErr AEProcessAppleEvent(const EventRecord *event);

// What a caller on the shell's own bus interface is told of an 'exec' beyond its reply: 'none' (the default),
// 'nrun' no such tool or the launch failed, 'cncl' cancelled, 'unkn' unknown command. Cleared at each
// dispatch.
void AESetCallOutcome(OSType outcome);

// The event id packed in a high-level event record.
inline OSType high_level_event_id(const EventRecord &event) {
    return static_cast<OSType>(static_cast<std::uint16_t>(event.where.v)) << 16 |
           static_cast<std::uint16_t>(event.where.h);
}

} // namespace quillon

#endif
