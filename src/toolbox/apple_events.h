// Apple Event Manager: events between programs, with their parameters and replies.
//
// A descriptor (AEDesc) holds one value, a list of values, or a whole event. It owns the memory of its value:
// whoever made it or was given it as a result frees it with AEDisposeDesc. No procedure here frees what a
// RESULT held before.
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
    typeShortInteger = four("shor"),
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
enum : std::int16_t { kAEHighPriority = 1, kAutoGenerateReturnID = -1 };
enum : std::int32_t { kAnyTransactionID = 0, kAEInteractWithAll = 2 };

struct AEData; // the value of a descriptor: its bytes or its items

struct AEDesc {
    OSType descriptorType = typeNull;
    AEData *data = nullptr;
};
using AppleEvent = AEDesc;
using AEDescList = AEDesc;

// Carries one received event out. The handler puts its results into REPLY as parameters; its own result goes
// back to the sender as the reply's error number. REFCON is the number given when it was installed.
using AEEventHandler = OSErr (*)(const AppleEvent *event, AppleEvent *reply, std::int32_t refcon);
// AESend calls this for each event that comes while it waits, and with a null event when none comes. SLEEP is
// how long the next wait may sleep, in ticks (1/60 s), and may be set. A result of 1 abandons the wait.
using AEIdleProc = int (*)(EventRecord *event, std::uint32_t *sleep);
// Says which of the events that other programs send are taken while AESend waits. No procedure here calls it.
using AEFilterProc = int (*)(EventRecord *event, std::int32_t return_id, std::int32_t transaction_id,
                             const AEDesc *sender);

// Makes a descriptor that holds a copy of SIZE bytes of DATA. A value of type 'fss ' is an FSSpec, 'psn ' a
// ProcessSerialNumber, 'sign' an OSType, 'long' an int32, 'TEXT' bytes without a final NUL. Always noErr.
OSErr AECreateDesc(OSType type, const void *data, std::size_t size, AEDesc *result);
// Frees the value of DESC, which is an empty 'null' descriptor from then on. Always noErr.
OSErr AEDisposeDesc(AEDesc *desc);
// Makes RESULT a copy of DESC with all that it holds. Always noErr.
OSErr AEDuplicateDesc(const AEDesc *desc, AEDesc *result);
// Copies the bytes of DESC, at most ROOM of them. paramErr when it has no value.
OSErr AEGetDescData(const AEDesc *desc, void *data, std::size_t room);
// Makes an event without parameters for the program that TARGET (a 'psn ' or 'sign' descriptor, copied)
// names. RETURN_ID and TRANSACTION_ID are not used: the bus tells replies apart itself. Always noErr.
OSErr AECreateAppleEvent(OSType event_class, OSType event_id, const AEDesc *target, std::int16_t return_id,
                         std::int32_t transaction_id, AppleEvent *result);
// Makes an empty list. Always noErr.
OSErr AECreateList(AEDescList *result);
// Appends a copy of DESC at the end of the list, whatever INDEX says. errAECoercionFail when LIST is none.
OSErr AEPutDesc(AEDescList *list, std::int32_t index, const AEDesc *desc);
// Sets COUNT to the number of items; 0 for a descriptor without a value. Always noErr.
OSErr AECountItems(const AEDescList *list, std::int32_t *count);
// Copies the item number INDEX (from 1) of the list, at most ROOM bytes of it. ACTUAL (may be null) is set to
// its whole size. errAEDescNotFound when there is no such item, errAECoercionFail when it is not of type
// WANTED ('****' takes any).
OSErr AEGetNthPtr(const AEDescList *list, std::int32_t index, OSType wanted, void *data, std::size_t room,
                  std::size_t *actual);
// Give the event a parameter under KEYWORD, a copy of SIZE bytes of DATA or of DESC; a parameter of that
// keyword is replaced. paramErr when EVENT was never made.
OSErr AEPutParamPtr(AppleEvent *event, OSType keyword, OSType type, const void *data, std::size_t size);
OSErr AEPutParamDesc(AppleEvent *event, OSType keyword, const AEDesc *desc);
// Copies the bytes of the parameter under KEYWORD, with ROOM, ACTUAL and WANTED as in AEGetNthPtr, and marks
// the parameter as read. errAEDescNotFound when there is none, errAECoercionFail when it has another type.
OSErr AEGetParamPtr(const AppleEvent *event, OSType keyword, OSType wanted, void *data, std::size_t room,
                    std::size_t *actual);
// Makes RESULT a copy of the parameter, with the results of AEGetParamPtr. Where a list is wanted, a single
// value becomes a list of one item.
OSErr AEGetParamDesc(const AppleEvent *event, OSType keyword, OSType wanted, AEDesc *result);
// Copies an attribute of the event, a code of four bytes, at most ROOM bytes of it: for 'evid' the event id,
// for 'miss' the keyword of the first parameter that nobody has read. errAEDescNotFound for any other
// attribute and when every parameter was read. WANTED is not used.
OSErr AEGetAttributePtr(const AppleEvent *event, OSType keyword, OSType wanted, void *data, std::size_t room);

// Sends EVENT to its target. With kAEWaitReply in MODE it waits for the reply at most TIMEOUT ticks
// (kAEDefaultTimeout: one minute, kNoTimeOut: for ever) and fills REPLY, which the caller disposes of. While
// it waits, IDLE (may be null) gets every update, activate and operating-system event, and a null event when
// there is none; without IDLE these events stay in the queue. Events from other programs that start no work
// are handled. FILTER is never called: the gate of the queue alone says which events are taken. The result is
// the receiver's own error number, or procNotFound: there is no such process; connectionInvalid: the bus or
// the receiver has gone; errAEWaitCanceled: IDLE abandoned the wait; errAETimeout; errAEEventNotHandled: the
// target cannot take such an event; permErr: a program that is not on the bus cannot be started with the
// document; paramErr: the target is no process and no signature.
OSErr AESend(const AppleEvent *event, AppleEvent *reply, std::int32_t mode, std::int16_t priority,
             std::int32_t timeout, AEIdleProc idle, AEFilterProc filter = nullptr);

// Makes HANDLER the procedure for events of that class and id, in place of an earlier one. Always noErr.
OSErr AEInstallEventHandler(OSType event_class, OSType event_id, AEEventHandler handler, std::int32_t refcon);
// Says which senders may make the shell show windows. On this host all may. Always noErr.
OSErr AESetInteractionAllowed(std::int32_t level);
// Calls the handler of the received event that a high-level event record stands for, and sends its reply. The
// result is the handler's; errAEEventNotHandled when there is none.
OSErr AEProcessAppleEvent(const EventRecord *event);

// Says how a command that came over the shell's own bus interface ended, when that is more than the reply
// holds: 'none' (as it is before each event), 'nrun' there is no such tool or it could not be launched,
// 'cncl' it was cancelled, 'unkn' the command is unknown.
void AESetCallOutcome(OSType outcome);

// The event id of a high-level event record, whose WHERE holds it: the high half in v, the low half in h.
inline OSType high_level_event_id(const EventRecord &event) {
    return static_cast<OSType>(static_cast<std::uint16_t>(event.where.v)) << 16 |
           static_cast<std::uint16_t>(event.where.h);
}

} // namespace quillon

#endif
