// Window, Cursor, Dialog and Notification Managers, as far as one console window needs them. Rectangles and
// points are in the global coordinates of the screens, in pixels.
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
};
enum CursorShape { arrowCursor, watchCursor, iBeamCursor };

// Makes the shell's window, not shown yet; BOUNDS is the rectangle of its content. Null when it cannot be
// made. The window lasts as long as the process.
WindowRef NewCWindow(const Rect *bounds, const char *title);
// Show the window, hide it, and bring it before the shell's other windows.
void ShowWindow(WindowRef window);
void HideWindow(WindowRef window);
void SelectWindow(WindowRef window);
// The shell's frontmost visible window; null when none is shown.
WindowRef FrontWindow();
// Sets BOUNDS to the rectangle of the window's content.
void GetWindowPortBounds(WindowRef window, Rect *bounds);
// Moves the window with the mouse that went down at WHERE; a desktop that moves windows itself has done it.
void DragWindow(WindowRef window, Point where);
// The part of the screen in which a mouse-down event fell; WINDOW is set to the window there, or to null.
WindowPart FindWindow(const EventRecord *event, WindowRef *window);
// Stores the rectangles of the active screens, at most ROOM, the main one first, and gives their number.
int GetScreens(Rect *screens, int room);

// Sets the shape of the mouse pointer.
void SetCursor(CursorShape shape);
// Sounds the desktop's bell; DURATION is not used.
void SysBeep(int duration);
// Shows the shell's alert until the person dismisses it; there is one, number 900.
void StopAlert(std::int16_t number);

// What a request for the person's attention holds.
struct NMRec {
    std::int16_t qType; // 8
    std::int16_t nmMark;
    OSType nmIcon;
    std::int32_t nmSound; // -1: the alert sound
    const char *nmStr;
    std::int32_t nmRefCon;
};
// Ask for the attention of the person while the shell is behind, and take that back. Always noErr.
OSErr NMInstall(NMRec *request);
OSErr NMRemove(NMRec *request);

enum : OSType { gestaltMenuMgrAttr = four("menu"), gestaltSystemVersion = four("sysv") };
// Tells the system that the program follows its appearance, as every front does. Always noErr.
OSErr RegisterAppearanceClient();
// Sets RESPONSE to a feature of the system: for 'sysv' its version in binary-coded decimal (0x1000 is 10.0),
// for 'menu' bit 1 tells the newer menu layout. paramErr for any other selector.
OSErr Gestalt(OSType selector, std::int32_t *response);
// Makes Gestalt answer as that version of the system does (the option --system 9 of the headless front).
void SetSystemVersion(std::int32_t version);

} // namespace quillon

#endif
