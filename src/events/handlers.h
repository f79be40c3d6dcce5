// The events that other programs send to the shell.
#ifndef QUILLON_EVENTS_HANDLERS_H
#define QUILLON_EVENTS_HANDLERS_H

#include "toolbox/apple_events.h"
#include "toolbox/bounded.h"

namespace quillon {

extern std::uint8_t doAppleTeX, doFind; // work that an event asked for, done right after its dispatch
extern BoundedString<256> findString;   // what the last find or locate event looks for
extern BoundedString<1024> odocfile;    // Unix path of the document of the last open event

void DoAEInstallation();
OSErr HandleOAPP(const AppleEvent *event, AppleEvent *reply, std::int32_t refcon);
OSErr HandleODOC(const AppleEvent *event, AppleEvent *reply, std::int32_t refcon);
OSErr HandlePDOC(const AppleEvent *event, AppleEvent *reply, std::int32_t refcon);
OSErr HandleQUIT(const AppleEvent *event, AppleEvent *reply, std::int32_t refcon);
OSErr HandleAppleScript(const AppleEvent *event, AppleEvent *reply, std::int32_t refcon);
OSErr HandleFIND(const AppleEvent *event, AppleEvent *reply, std::int32_t refcon);
OSErr HandleFormats(const AppleEvent *event, AppleEvent *reply, std::int32_t refcon);
OSErr HandleLocate(const AppleEvent *event, AppleEvent *reply, std::int32_t refcon);
OSErr RequiredCheck(const AppleEvent *event);
void doAppleEvent(const EventRecord *event);
void doOpenDoc();
int SetCurrDirFromParameter(BoundedBuffer &command);

} // namespace quillon

#endif
