// Starts the toolkit in programs that seldom show a window.
#ifndef QUILLON_WIDGETS_APPLICATION_H
#define QUILLON_WIDGETS_APPLICATION_H

namespace widgets {

// The ids of Quillon's desktop entries. A desktop knows by them which entry and icon a window belongs to.
inline constexpr const char *shell_entry = "org.quillon.Shell";
inline constexpr const char *setup_entry = "org.quillon.SetUp";

// Makes the toolkit's application object at the first call, for the desktop entry of that id; it is never
// freed, since the toolkit allows no second. False when no display can be opened.
bool make_window_application(const char *desktop_entry);

} // namespace widgets

#endif
