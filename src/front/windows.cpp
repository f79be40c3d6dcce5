// The calls for windows, the pointer, notifications and the system's features; most go on to the front.
#include "toolbox/windows.h"

#include "front/front.h"
#include "toolbox/dialogs.h"
#include "toolbox/navigation.h"

namespace quillon {

// Version 10.0, which has the newer menu layout.
static std::int32_t system_version = 0x1000;

WindowRef NewCWindow(const Rect *bounds, const char *title) {
    return front->new_window(bounds, title);
}

void ShowWindow(WindowRef window) {
    front->show_window(window, 1);
}

void HideWindow(WindowRef window) {
    front->show_window(window, 0);
}

void SelectWindow(WindowRef window) {
    front->select_window(window);
}

WindowRef FrontWindow() {
    return front->front_window();
}

void GetWindowPortBounds(WindowRef window, Rect *bounds) {
    front->window_bounds(window, bounds);
}

void DragWindow(WindowRef window, Point where) {
    front->drag_window(window, where);
}

WindowPart FindWindow(const EventRecord *event, WindowRef *window) {
    // A mouse down that carries a menu choice fell in the menu bar.
    if (event->message != 0) {
        *window = nullptr;
        return inMenuBar;
    }
    return front->find_window(event, window);
}

int GetScreens(Rect *screens, int room) {
    return front->screens(screens, room);
}

void SetCursor(CursorShape shape) {
    front->set_cursor(shape);
}

void SysBeep(int) {
    front->beep();
}

// Any button closes the alert.
static int close_alert(DialogRef window, const DialogEvent *event) {
    if (event->event_class == four("cntl"))
        QuitAppModalLoopForWindow(window);
    return 1;
}

void StopAlert(std::int16_t) {
    const DialogRef window = CreateWindowFromNib("alert 900");
    InstallWindowEventHandler(window, close_alert);
    RunAppModalLoopForWindow(window);
    DisposeWindow(window);
}

OSErr NMInstall(NMRec *) {
    front->notify(1);
    return noErr;
}

OSErr NMRemove(NMRec *) {
    front->notify(0);
    return noErr;
}

void SetSystemVersion(std::int32_t version) {
    system_version = version;
}

OSErr RegisterAppearanceClient() {
    return noErr;
}

OSErr Gestalt(OSType selector, std::int32_t *response) {
    if (selector == gestaltSystemVersion)
        *response = system_version;
    else if (selector == gestaltMenuMgrAttr)
        *response = system_version > 0x0FFF ? 2 : 0;
    else
        return paramErr;
    return noErr;
}

int NavRun(const NavRequest *request, BoundedBuffer &posix_path) {
    return front->navigate(request, posix_path);
}

} // namespace quillon
