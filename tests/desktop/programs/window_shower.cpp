// "window-shower NAME" is the shell with a window and nothing in it, which shows one of the windows that it
// shows seldom: "LongName", "alert 900", "cmdkey" or "wait". It ends with the window, or is ended.
#include <cstdio>
#include <cstring>
#include <dlfcn.h>

#include "console/window.h"
#include "core/event_loop.h"
#include "dialogs/applications.h"
#include "dialogs/command_line.h"
#include "dialogs/message_windows.h"
#include "front/front.h"
#include "toolbox/windows.h"

using namespace quillon;

int main(int argc, char **argv) {
    void *const library = dlopen(QUILLON_DESKTOP_FRONT, RTLD_NOW);
    using Maker = const Front *(*)(int, char **);
    const auto make = library ? reinterpret_cast<Maker>(dlsym(library, "quillon_desktop_front")) : nullptr;
    front = make ? make(argc, argv) : nullptr;
    if (argc != 2 || !front || !SetUpTextWindow("Quillon", 1)) {
        std::fputs("window-shower: no window can be opened\n", stderr);
        return 2;
    }
    if (std::strcmp(argv[1], "LongName") == 0)
        longName();
    else if (std::strcmp(argv[1], "alert 900") == 0)
        StopAlert(900);
    else if (std::strcmp(argv[1], "cmdkey") == 0)
        GetCmdKey();
    else if (std::strcmp(argv[1], "wait") == 0)
        for (WaitForScript();;)
            main_event(mask_waiting);
    return 0;
}
