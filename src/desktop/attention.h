// Asks for the person's attention while the shell is in the background, and brings the shell to the front.
#ifndef QUILLON_DESKTOP_ATTENTION_H
#define QUILLON_DESKTOP_ATTENTION_H

namespace quillon::desktop {

// Shows a desktop notification and marks the window as urgent (1), or takes the notification back (0).
void notify(int on);
// To be called when a run begins and ends. When one of ten seconds or more ends while another application is
// in front, the person is notified once.
void run_begins();
void run_ends();
// Shows the window in front of the others. TOKEN is the desktop's activation token of the program that asks
// for it; it may be null.
void bring_to_front(const char *token);
// Makes the toolkit post suspend and resume events as the application goes to the back and comes to the
// front; to be called once.
void watch_activation();

} // namespace quillon::desktop

#endif
