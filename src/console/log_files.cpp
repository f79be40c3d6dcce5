// The console shows the contents of files, and keeps a log file of its own.
#include <unistd.h>

#include "console/output.h"
#include "console/window.h"
#include "toolbox/bounded.h"
#include "toolbox/console_feed.h"
#include "toolbox/text_engine.h"

namespace quillon {

std::int16_t logRef = -1;
FSSpec logFileSpec;

// Appends the bytes of a file to the console. Returns 1, or 0 after a message when it cannot be opened.
static int append_file(const FSSpec *location) {
    static char block[1024];
    std::int16_t reference = -1;
    if (FSpOpenDF(location, 'w', &reference) != noErr && FSpOpenDF(location, 'r', &reference) != noErr) {
        ml_printf("can't open data fork\n");
        return 0;
    }
    long count = sizeof block;
    while (count == static_cast<long>(sizeof block)) {
        const OSErr error = FSRead(reference, &count, block);
        if (error != noErr && error != eofErr)
            count = 0;
        if (count > 0)
            PutTextInfo(block, static_cast<std::size_t>(count));
    }
    FSClose(reference);
    return 1;
}

void ReadLogFile(const FSSpec *location) {
    MarkTranscript(1);
    const int shown = append_file(location);
    MarkTranscript(0);
    if (shown)
        FSpDelete(location);
}

void ReadInfoFile(const FSSpec *location) {
    append_file(location);
}

void OpenLogFile() {
    std::int16_t volume = 0;
    std::int32_t folder = 0;
    static unsigned counter = 0;
    BoundedString<64> leaf;
    leaf.format("quillon-console-%ld-%u", static_cast<long>(getpid()), ++counter);
    if (FindFolder(four("temp"), 1, &volume, &folder) != noErr) {
        ml_printf("can't find folder of log file\n");
        return;
    }
    const OSErr error = FSMakeFSSpec(volume, folder, leaf.c_str(), &logFileSpec);
    if (error != noErr && error != fnfErr) {
        ml_printf("can't make fsspec of log file\n");
        return;
    }
    FSpCreate(&logFileSpec, four("MPS "), four("TEXT"));
    if (FSpOpenDF(&logFileSpec, 'w', &logRef) != noErr) {
        logRef = -1;
        ml_printf("can't open data fork of log file\n");
    }
}

void WriteLogFile() {
    if (logRef == -1)
        return;
    SetEOF(logRef, 0);
    TXNSave(text, logRef);
}

void CloseLogFile() {
    // Kept on purpose: logRef is not set back to -1, so nothing may be printed after this.
    if (logRef != -1)
        FSClose(logRef);
}

} // namespace quillon
