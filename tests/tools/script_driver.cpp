// This program joins the session bus as the shell does and then does what its arguments say. It prints what
// goes into the console, and at the end the shell's own events that wait in the queue: one that sends it to
// the background and one that brings it back are there from the start.
//
//   activate APP              runs the script that activates the application
//   line APP LINE             runs the script that goes to a line
//   run TEXT                  runs a script and prints its result, then its error
//   exec APP COMMAND FOLDER   sends an 'exec' event and prints the result
//
// With "--running SIGNATURE" in front it waits until an application of that signature is on the bus.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "console/window.h"
#include "front/front.h"
#include "headless/headless.h"
#include "linux/events/event_sources.h"
#include "linux/events/loop.h"
#include "settings/settings.h"
#include "state/job_state.h"
#include "toolbox/codes.h"
#include "tools/processes.h"
#include "tools/scripts.h"
#include "viewers/editor.h"

using namespace quillon;

namespace {

int usage() {
    std::fputs(
        "script-driver [SIGNATURE] activate APP | line APP LINE | run TEXT | exec APP COMMAND FOLDER\n",
        stderr);
    return 64;
}

int carry_out(const std::vector<std::string> &words) {
    if (words.size() == 2 && words[0] == "activate")
        std::printf("%d\n", callScript2alt(words[1].c_str()));
    else if (words.size() == 3 && words[0] == "line")
        std::printf("%d\n", callScript3(words[1].c_str(), std::atoi(words[2].c_str())));
    else if (words.size() == 4 && words[0] == "exec")
        std::printf("%d\n", SendAppleScript(words[1].c_str(), words[2].c_str(), words[3].c_str()));
    else if (words.size() == 2 && words[0] == "run") {
        std::printf("%d\n", static_cast<int>(CScript(words[1].c_str())));
        GetScriptErrorInfo();
        DisposeCScript();
    } else
        return usage();
    return 0;
}

void print_own_events() {
    EventRecord event;
    while (GetNextEvent(1u << osEvt, &event))
        std::puts(event.message & resumeFlag ? "resume" : "suspend");
}

} // namespace

int main(int count, char **arguments) {
    std::vector<std::string> words(arguments + 1, arguments + count);
    front = &headless_front;
    haveosx = 1;
    check_config();
    space_char = 31;
    SetUpTextWindow("script-driver", 1);
    HostLoop();
    if (!ConnectHostBus()) {
        std::fputs("script-driver: no session bus is reachable\n", stderr);
        return 69;
    }
    OSType signature = 0;
    if (words.size() > 2 && words[0] == "--running" && parse_code(words[1], &signature)) {
        words.erase(words.begin(), words.begin() + 2);
        while (HostBus() && !IsSigRunning(signature, nullptr))
            LoopSleep(-1);
    }
    PostEvent(osEvt, suspendResumeMessage, 0, {0, 0});
    PostEvent(osEvt, suspendResumeMessage | resumeFlag, 0, {0, 0});
    const int status = carry_out(words);
    print_own_events();
    // What was sent without waiting for a reply may still be on its way out.
    sd_bus_flush(HostBus());
    return status;
}
