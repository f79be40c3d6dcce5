// Window, Cursor, Dialog and Notification Managers, as far as one console window needs them.
#ifndef QUILLON_TOOLBOX_WINDOWS_H
#define QUILLON_TOOLBOX_WINDOWS_H

#include "toolbox/events.h"
#include "toolbox/types.h"

namespace quillon {

struct Window;
using WindowRef = Window *;

enum WindowPart : std::int16_t {
    inDesk = 0,
    inMenuBar = 1,
    inContent = 3,
    inDrag = 4,
    inGrow = 5,
    inGoAway = 6
};
enum CursorShape { arrowCursor, watchCursor, iBeamCursor };

// The window is made invisible. BOUNDS in global coordinates (top, left, bottom, right).
WindowRef NewCWindow(const Rect *bounds, const char *title);
void ShowWindow(WindowRef window);
void HideWindow(WindowRef window);
void SelectWindow(WindowRef window);
WindowRef FrontWindow();
// The content's rectangle in global coordinates.
void GetWindowPortBounds(WindowRef window, Rect *bounds);
void DragWindow(WindowRef window, Point where);
void GrowWindow(WindowRef window, Point where);
// Where a mouse-down event fell.
WindowPart FindWindow(const EventRecord *event, WindowRef *window);
// The active screens, the main one first; the number of them, at most ROOM are stored.
int GetScreens(Rect *screens, int room);

void SetCursor(CursorShape shape);
void SysBeep(int duration);
// Shows the alert of that number until it is dismissed.
void StopAlert(std::int16_t number);

// Notification Manager: asks for attention while the shell is in the background.
struct NMRec {
    std::int16_t qType; // 8
    std::int16_t nmMark;
    OSType nmIcon;
    std::int32_t nmSound; // -1: the alert sound
    const char *nmStr;
    std::int32_t nmRefCon;
};
OSErr NMInstall(NMRec *request);
OSErr NMRemove(NMRec *request);

enum : OSType { gestaltMenuMgrAttr = four("menu"), gestaltSystemVersion = four("sysv") };
// Tells the system that the program follows its appearance; every front does.
OSErr RegisterAppearanceClient();
OSErr Gestalt(OSType selector, std::int32_t *response);
// `--system 9` of the headless front: Gestalt answers as that system.
void SetSystemVersion(std::int32_t version);

} // namespace quillon

#endif
