// A twin of the script component, of AESend and of the pipe library: it keeps a record of every call and
// answers what the test says. A program that links it does not link the bodies of src/linux/events.
#ifndef QUILLON_TESTS_TOOLS_TWIN_TOOLBOX_TWIN_H
#define QUILLON_TESTS_TOOLS_TWIN_TOOLBOX_TWIN_H

#include <string>
#include <vector>

#include "toolbox/scripts.h"

namespace quillon::test {

struct ToolboxTwin {
    std::vector<std::string> calls; // in order, each with what it was given

    ComponentInstance component = 7; // what OpenDefaultComponent answers
    OSStatus get_result = noErr, set_result = noErr, run_result = noErr, close_result = noErr;
    OSAID script_result = 0; // what OSACompileExecute leaves
    std::int16_t error_number = 0;
    std::string error_message;
    OSASendProc installed = nullptr; // by OSASetSendProc

    // What AESend was given last, and what it answers.
    const AppleEvent *event = nullptr;
    const AppleEvent *reply = nullptr;
    std::int32_t mode = 0, timeout = 0;
    std::int16_t priority = 0;
    AEIdleProc idle = nullptr;
    AEFilterProc filter = nullptr;
    OSErr send_result = noErr;

    int library = 1; // what SystemFrameworkLoad answers
};
extern ToolboxTwin twin;

// The component's own send procedure in the twin; it records that it was called.
OSErr own_send(const AppleEvent *, AppleEvent *, std::int32_t, std::int16_t, std::int32_t, AEIdleProc,
               AEFilterProc, std::int32_t);

} // namespace quillon::test

#endif
