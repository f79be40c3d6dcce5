// Asking for the person's attention while the shell is in the background, and coming to the front.
#ifndef QUILLON_DESKTOP_ATTENTION_H
#define QUILLON_DESKTOP_ATTENTION_H

namespace quillon::desktop {

// A desktop notification and the window's urgency hint; 0 takes the notification back.
void notify(int on);
// Marks the begin and the end of a run: who is elsewhere when a long one ends is told, once.
void run_begins();
void run_ends();
// TOKEN is the activation token of who asks; may be null.
void bring_to_front(const char *token);
// Posts suspend and resume as the application goes to the back and comes to the front.
void watch_activation();

} // namespace quillon::desktop

#endif
