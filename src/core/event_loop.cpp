#include "core/event_loop.h"

#include <cstdlib>

#include "console/output.h"
#include "console/window.h"
#include "core/command_table.h"
#include "events/handlers.h"
#include "front/front.h"
#include "jobs/typeset_on_save.h"
#include "menus/current_files.h"
#include "menus/menus.h"
#include "menus/recent_files.h"
#include "state/job_scope.h"
#include "state/job_state.h"
#include "toolbox/apple_events.h"
#include "tools/processes.h"

namespace quillon {

EventRecord gEvent;

static void quit_program() {
    SaveRecentItems();
    EventRecord seen;
    for (int i = 0; i < 3; i++)
        EventAvail(everyEvent, &seen);
    TextCleanUp();
    std::exit(0);
}

int main_event(int mask) {
    if (doQuit)
        quit_program();
    // A request from outside to leave cancels the run first; the shell quits when the run has ended.
    if (aeQuit || (LeaveRequested() && !job_running()))
        doQuit = 1;
    sleepTime = inBackground ? 60 : 10;
    watch_step();
    // The step that ends the program is not waited for.
    if (WaitNextEvent(static_cast<std::uint16_t>(mask & 0xFFFF), &gEvent, doQuit ? 0 : sleepTime)) {
        const EventRecord event = gEvent;
        DoEvent(&event);
        return 1;
    }
    TextIdle();
    return 0;
}

int WaitForUpdate() {
    while (main_event(mask_waiting))
        ;
    return 0;
}

void wait_for_front() {
    DoNotify();
    // Outside a job main_event itself obeys a request to leave. During a job the wait ends, so that the job
    // can.
    while (inBackground && !(LeaveRequested() && job_running()))
        if (!main_event(mask_waiting))
            front->front_wait();
}

void DoEvent(const EventRecord *event) {
    switch (event->what) {
    case mouseDown:
        mouse_event(event);
        break;
    case keyDown:
    case autoKey:
        key_event(event);
        break;
    case updateEvt:
        Text_Update(theConsole);
        break;
    case activateEvt:
        Text_Activate(theConsole, event->modifiers & activeFlag);
        break;
    case osEvt:
        multi_event(event);
        break;
    case kHighLevelEvent:
        doAppleEvent(event);
        break;
    default:
        break;
    }
}

static void note_modifiers(const EventRecord *event) {
    shift_key_down = event->modifiers & shiftKey;
    option_key_down = event->modifiers & optionKey;
}

void mouse_event(const EventRecord *event) {
    const WindowRef in_front = FrontWindow();
    WindowRef window = nullptr;
    note_modifiers(event);
    switch (FindWindow(event, &window)) {
    case inMenuBar:
        menu_choice(event);
        break;
    case inContent:
        if (window != in_front) {
            ShowWindow(window);
            SelectWindow(window);
        } else if (window == theConsole) {
            DoTextContent(event);
        }
        break;
    case inDrag:
        if (window != in_front && !(event->modifiers & cmdKey)) {
            ShowWindow(window);
            SelectWindow(window);
        } else {
            DragWindow(window, event->where);
        }
        break;
    case inGrow:
        if (window == theConsole)
            GrowTextWindow(event);
        break;
    default:
        break;
    }
}

void key_event(const EventRecord *event) {
    note_modifiers(event);
    if (event->what == keyDown && event->modifiers & cmdKey) {
        ChangeMenus();
        const std::int32_t choice = MenuKey(static_cast<char>(event->message));
        HiliteMenu(0);
        do_menus(choice);
        return;
    }
    TXNKeyDown(text, event);
    TextKey();
    CheckLineCount();
}

void menu_choice(const EventRecord *event) {
    ChangeMenus();
    const std::int32_t choice = MenuSelect(event);
    HiliteMenu(0);
    do_menus(choice);
}

void do_menus(std::int32_t choice) {
    const auto item = static_cast<std::int16_t>(choice & 0xFFFF);
    const Command *const command = find_command(static_cast<std::int16_t>(choice >> 16), item);
    if (command)
        choose(*command, item);
}

void ChangeMenus() {
    OldTeXFile();
    for (int i = 0; i < command_count; i++) {
        const Command &row = command_table[i];
        if (!row.enabled)
            continue;
        if (has_effect(row) && row.enabled())
            EnableMenuItem(GetMenuHandle(row.menu), row.item);
        else
            DisableMenuItem(GetMenuHandle(row.menu), row.item);
    }
    if (!forceQuit)
        return;
    disable_menu(optionsMenu);
    disable_menu(transferMenu);
    disable_menu(fileMenu);
    if (!haveosx)
        EnableMenuItem(fileMenu, file_quit);
}

} // namespace quillon
