// Watching the files that a document is made from: those that its last run read, without what runs write and
// without the distribution's own.
#ifndef QUILLON_TOOLBOX_WATCHING_H
#define QUILLON_TOOLBOX_WATCHING_H

#include "toolbox/bounded.h"

namespace quillon {

// Watches the document whose main file is at the POSIX path MAIN, and no other any more; none for null. A
// private shell watches none. Returns 1, or 0 with the reason in PROBLEM when the host has no room for that.
int WatchDocument(const char *main, BoundedBuffer &problem);
// The number of files that are watched.
int WatchedFiles();
// 1, once, when a file was saved and nothing more was for a moment; 0 else, and while a run goes on.
int WatchedFileSaved();
// Tells that a run of an engine begins.
void WatchRunBegins();
// 1 when a file was saved since the run began and the engine waits for an answer, else 0.
int SavedAtPrompt();
// Tells that the run has ended and that MAIN, a POSIX path, is the document to watch from now on. Returns 1,
// with the name of a file in ENDLESS that changes in every run and is waited for no more (empty when there is
// none); 0 as WatchDocument. Does nothing while nothing is watched.
int WatchRunEnded(const char *main, BoundedBuffer &problem, BoundedBuffer &endless);

} // namespace quillon

#endif
