// Process Manager: the programs that run, launching, bringing to the front.
#ifndef QUILLON_TOOLBOX_PROCESSES_H
#define QUILLON_TOOLBOX_PROCESSES_H

#include "toolbox/events.h"
#include "toolbox/files.h"
#include "toolbox/types.h"

namespace quillon {

constexpr ProcessSerialNumber kNoProcess = {0, 0};

struct ProcessInfoRec {
    std::uint32_t processInfoLength; // 60
    unsigned char *processName;      // length-prefixed, room for 64 bytes; may be null
    ProcessSerialNumber processNumber;
    OSType processType;
    OSType processSignature;
    FSSpec *processAppSpec; // may be null: the location of the program or of its executable
};

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

struct LaunchParamBlockRec {
    std::uint32_t reserved1;
    std::uint16_t reserved2;
    std::uint16_t launchBlockID;
    std::uint32_t launchEPBLength;
    std::uint16_t launchFileFlags;
    std::uint16_t launchControlFlags;
    FSSpec *launchAppSpec;
    ProcessSerialNumber launchProcessSN;
    std::uint32_t launchPreferredSize;
    std::uint32_t launchMinimumSize;
    std::uint32_t launchAvailableSize;
    AppParameters *launchAppParameters;
};

// The process after PSN (kNoProcess: the first); procNotFound at the end. In order: the programs launched
// from here, the applications on the bus, the user's other processes.
OSErr GetNextProcess(ProcessSerialNumber *psn);
// 1 for one of the user's other processes: they come last, are known by their program (ProcessIsProgram), and
// have no signature of their own.
int IsPlainProcess(const ProcessSerialNumber *psn);
OSErr GetProcessInformation(const ProcessSerialNumber *psn, ProcessInfoRec *info);
OSErr GetCurrentProcess(ProcessSerialNumber *psn);
OSErr GetFrontProcess(ProcessSerialNumber *psn);
int SameProcess(const ProcessSerialNumber *a, const ProcessSerialNumber *b);
OSErr SetFrontProcess(const ProcessSerialNumber *psn);
// Starts the bundle or program at launchAppSpec. memFullErr when the host has no room for a process, another
// code when it cannot be started.
OSErr LaunchApplication(LaunchParamBlockRec *block);
// Ends a program launched from here at once, with every process of its group. procNotFound for any other
// process.
OSErr EndProcess(const ProcessSerialNumber *psn);
// Whether the process is the program at SPEC: a plain program is known by its canonical path, since many
// share a signature.
int ProcessIsProgram(const ProcessSerialNumber *psn, const FSSpec *spec);

} // namespace quillon

#endif
