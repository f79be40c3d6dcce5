// Open Scripting Architecture: the component that runs script texts.
//
// The component understands one or more blocks of this form, in any letter case, where blanks and tabs indent
// and separate, and carriage returns and line feeds end lines; empty lines count for nothing:
//
//     tell application "<HFS path of a bundle or a program>"
//         activate
//         select display_line N of text window 1
//     end tell
//
// A block holds any number of the two statements. A backslash in the path makes the byte behind it a part of
// the path, be it a quote or another backslash. N is a decimal number of 32 bits, with or without a minus.
#ifndef QUILLON_TOOLBOX_SCRIPTS_H
#define QUILLON_TOOLBOX_SCRIPTS_H

#include "toolbox/apple_events.h"

namespace quillon {

// One opened component; 0 is none. No number is given twice, so that of a closed component stays invalid.
using ComponentInstance = std::uint32_t;
// A script or a value that the component keeps.
using OSAID = std::uint32_t;

enum : OSType {
    kOSAComponentType = four("osa "),
    kAppleScriptSubtype = four("ascr"),
    kOSAErrorNumber = four("errn"),
    kOSAErrorMessage = four("errs"),
};
enum : OSAID { kOSANullScript = 0 };
enum : std::int32_t { kOSAModeNull = 0 };
enum : OSStatus {
    badComponentInstance = -2147450879,
    errOSAInvalidID = -1751,
    errOSAScriptError = -1753,
    errOSABadSelector = -1754,
    errAENoSuchObject = -1728,
    OSASyntaxError = -2740,
    OSASyntaxTypeError = -2741,
};

// Sends EVENT as AESend does, for the component. REFCON is the number given with the procedure.
using OSASendProc = OSErr (*)(const AppleEvent *event, AppleEvent *reply, std::int32_t mode,
                              std::int16_t priority, std::int32_t timeout, AEIdleProc idle,
                              AEFilterProc filter, std::int32_t refcon);

// Opens the component of that type and subtype. Returns 0 when there is none, or when it is open eight times
// already.
ComponentInstance OpenDefaultComponent(OSType type, OSType subtype);
// Closes the component, its send procedure and its last error included. badComponentInstance when it is not
// open; so it is for all procedures below.
OSStatus CloseComponent(ComponentInstance component);
// Tell and replace the procedure that sends what a script says. At first it is one that calls AESend, and so
// it is again when PROCEDURE is null.
OSStatus OSAGetSendProc(ComponentInstance component, OSASendProc *procedure, std::int32_t *refcon);
OSStatus OSASetSendProc(ComponentInstance component, OSASendProc procedure, std::int32_t refcon);
// Compiles the 'TEXT' in SOURCE and carries it out, statement by statement up to the first that fails. A text
// that does not compile sends nothing. Before each statement an application that does not run is launched (a
// program that is no bundle only for activate, since it takes none of these events). The event goes to its
// process: 'misc'/'actv' for activate, 'misc'/'slct' with N as '----' for select. The send waits for the
// reply, at most a minute, and is given up when the person cancels or the shell is to end.
//
// RESULT becomes kOSANullScript, since no statement has a value; CONTEXT must be that too (errOSAInvalidID).
// MODE is not used. errAECoercionFail when SOURCE is no 'TEXT'; errOSAScriptError when the script failed, of
// which OSAScriptError then tells the reason.
OSStatus OSACompileExecute(ComponentInstance component, const AEDesc *source, OSAID context,
                           std::int32_t mode, OSAID *result);
// Gives a script or a value back. kOSANullScript needs it not, and there is no other: errOSAInvalidID.
OSStatus OSADispose(ComponentInstance component, OSAID script);
// Makes RESULT the last error of the component's last script, to be disposed of by the caller: for SELECTOR
// kOSAErrorNumber a 'shor', for kOSAErrorMessage a 'TEXT'; after a script that succeeded 0 and an empty text.
// The numbers are OSASyntaxError: the text ends within quotes, or holds a zero byte; OSASyntaxTypeError: it
// says something else; errAENoSuchObject: there is no such application; procNotFound: it does not run and is
// not or cannot be launched; and any result of the send procedure. errOSABadSelector for another selector,
// errAECoercionFail when WANTED is another type.
OSStatus OSAScriptError(ComponentInstance component, OSType selector, OSType wanted, AEDesc *result);

} // namespace quillon

#endif
