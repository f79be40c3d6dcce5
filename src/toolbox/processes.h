// Process Manager: the programs that run, launching, bringing to the front.
#ifndef QUILLON_TOOLBOX_PROCESSES_H
#define QUILLON_TOOLBOX_PROCESSES_H

#include "toolbox/events.h"
#include "toolbox/files.h"
#include "toolbox/types.h"

namespace quillon {

constexpr ProcessSerialNumber kNoProcess = {0, 0};

// What GetProcessInformation fills. The name and the location are filled where their pointers are not null.
struct ProcessInfoRec {
    std::uint32_t processInfoLength; // 60
    unsigned char *processName;      // length-prefixed, room for 64 bytes; may be null
    ProcessSerialNumber processNumber;
    OSType processType;
    OSType processSignature;
    FSSpec *processAppSpec; // may be null: the location of the program or of its executable
};

// The first event that a launched application gets.
struct AppParameters {
    EventRecord theMsgEvent;
    std::uint32_t eventRefCon;
    std::uint32_t messageLength;
};

enum : std::uint16_t {
    extendedBlock = 0x4C43,
    extendedBlockLen = 32,
    launchContinue = 0x4000,
    launchNoFileFlags = 0x0800,
    launchDontSwitch = 0x0200,
};

// What LaunchApplication launches and how; it fills launchProcessSN.
struct LaunchParamBlockRec {
    std::uint16_t launchBlockID;
    std::uint32_t launchEPBLength;
    std::uint16_t launchFileFlags;
    std::uint16_t launchControlFlags;
    FSSpec *launchAppSpec;
    ProcessSerialNumber launchProcessSN;
    AppParameters *launchAppParameters;
};

// Replaces PSN by the process that follows it in the list, or by the first for kNoProcess. The programs
// launched from here come first, then the applications on the bus, then the user's other processes. At the
// end it gives procNotFound and kNoProcess.
OSErr GetNextProcess(ProcessSerialNumber *psn);
// 1 for one of the user's other processes, which has no signature of its own and is told by its program
// (ProcessIsProgram), else 0.
int IsPlainProcess(const ProcessSerialNumber *psn);
// Fills INFO; the signature is '????' where none is known. procNotFound when there is no such process.
OSErr GetProcessInformation(const ProcessSerialNumber *psn, ProcessInfoRec *info);
// Sets PSN to the shell itself. Always noErr.
OSErr GetCurrentProcess(ProcessSerialNumber *psn);
// Sets PSN to the shell while it is in front, else to kNoProcess. Always noErr.
OSErr GetFrontProcess(ProcessSerialNumber *psn);
// 1 when both are the same process, else 0.
int SameProcess(const ProcessSerialNumber *a, const ProcessSerialNumber *b);
// Asks the process, the shell itself or one on the bus, to come to the front. Always noErr.
OSErr SetFrontProcess(const ProcessSerialNumber *psn);
// What the commands that open documents in applications are told about what the shell does. Each is 1 or 0.
struct OpenHints {
    // A document for the application that is opened follows as an event. The command leaves the start of the
    // application to that event, so that it is started once.
    int document_follows;
    // A command that goes to a line of the document follows. The command that opens it leaves that to it.
    int line_follows;
    // The document is opened because a run has ended, so no window is to come forward for it.
    int after_run;
    // The person wants to see a place of the source in the document: the one that was edited last, else this
    // file (an absolute POSIX path) and line, which are null and 0 where there is none. The command says why
    // when the viewer shows no place.
    int shows_place;
    const char *place_file;
    std::int32_t place_line;
};
extern OpenHints open_hints;
// Starts the bundle, the desktop entry or the program at launchAppSpec and sets launchProcessSN. What is no
// bundle is started by the document that is sent to it next, or without one at the next wait for an event.
// memFullErr when the host has no room for a process, fnfErr when the program is missing, permErr when it
// cannot be started.
OSErr LaunchApplication(LaunchParamBlockRec *block);
// Ends a program launched from here at once, with every process below it and of its group. It waits for the
// end of a run's processes, two seconds at most. procNotFound for any other process.
OSErr EndProcess(const ProcessSerialNumber *psn);
// 1 when the process runs the program at SPEC, else 0. The canonical paths are compared, since many plain
// programs share a signature.
int ProcessIsProgram(const ProcessSerialNumber *psn, const FSSpec *spec);
// Returns 1 for a program launched from here that has ended and is listed still, since events of it wait.
int ProcessHasEnded(const ProcessSerialNumber *psn);

} // namespace quillon

#endif
