// These procedures handle the events that other programs send to the shell.
#ifndef QUILLON_EVENTS_HANDLERS_H
#define QUILLON_EVENTS_HANDLERS_H

#include "toolbox/apple_events.h"
#include "toolbox/bounded.h"

namespace quillon {

extern std::uint8_t doAppleTeX, doFind; // 1 while a document is to be opened, or a file to be found
extern BoundedString<256> findString;   // the file name of the last find or locate event
extern BoundedString<1024> odocfile;    // the Unix path of the document of the last open event

// Registers the handlers below, and those of the tools' reports. Runs once at start-up.
void DoAEInstallation();
// Each handles one event and returns noErr or the error that the sender gets; REFCON is not used. A text that
// does not fit its buffer is cut, and the console says so.
//
// HandleOAPP: the shell was launched; it does nothing. HandleODOC: sets odocfile and doAppleTeX for the first
// document. HandlePDOC: printing is refused with errAEEventNotHandled. HandleQUIT: stores the recent files
// and the console's place and ends the program at once.
OSErr HandleOAPP(const AppleEvent *event, AppleEvent *reply, std::int32_t refcon);
OSErr HandleODOC(const AppleEvent *event, AppleEvent *reply, std::int32_t refcon);
OSErr HandlePDOC(const AppleEvent *event, AppleEvent *reply, std::int32_t refcon);
OSErr HandleQUIT(const AppleEvent *event, AppleEvent *reply, std::int32_t refcon);
// Runs the command line of the event in its folder, and puts the exit status into REPLY; on request also the
// first error (its file as a POSIX path, its line, its text).
OSErr HandleAppleScript(const AppleEvent *event, AppleEvent *reply, std::int32_t refcon);
// Sets findString and doFind, so that the file is looked for and opened in the editor afterwards; REPLY says
// that the request was accepted.
OSErr HandleFIND(const AppleEvent *event, AppleEvent *reply, std::int32_t refcon);
// Puts the names of the Formats menu from item 3 on into REPLY, with blanks between them, up to 32,767 bytes.
OSErr HandleFormats(const AppleEvent *event, AppleEvent *reply, std::int32_t refcon);
// Looks for a TeX input and puts its HFS path into REPLY, or an empty text when there is none.
OSErr HandleLocate(const AppleEvent *event, AppleEvent *reply, std::int32_t refcon);
// Returns noErr when every parameter that EVENT requires has been read, errAEEventNotHandled when one has
// not, or the error that kept the shell from knowing.
OSErr RequiredCheck(const AppleEvent *event);
// Hands an event of another program to its handler, then does the work that the handler asked for.
void doAppleEvent(const EventRecord *event);
// Typesets the document odocfile. A name of 30 bytes or more, or a file of another kind (by its extension),
// is refused with a message.
void doOpenDoc();
// Cuts the working folder, " -@ PATH" with a Unix path, off the end of COMMAND and makes it curr_dir. Returns
// 1 when that was done, 0 when COMMAND names no folder or the folder does not exist; the text is cut off all
// the same.
int SetCurrDirFromParameter(BoundedBuffer &command);

} // namespace quillon

#endif
