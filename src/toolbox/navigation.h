// Navigation Services: the choosers for files, folders and applications.
#ifndef QUILLON_TOOLBOX_NAVIGATION_H
#define QUILLON_TOOLBOX_NAVIGATION_H

#include "toolbox/bounded.h"
#include "toolbox/events.h"
#include "toolbox/files.h"
#include "toolbox/types.h"

namespace quillon {

enum NavKind { navGetFile, navPutFile, navChooseFolder, navChooseApplication };

// What an application is chosen for.
enum NavUse { navAnyUse, navEditor, navPdfViewer, navPsViewer, navDviViewer };

// An entry of the filter pop-up: files of that creator and type, under the name TEXT.
struct NavMenuItem {
    OSType creator, type;
    BoundedString<512> text;
};

// What a chooser asks for. All strings and the filters belong to the caller.
struct NavRequest {
    NavKind kind;
    const char *prompt;
    const char *start_folder; // POSIX path; null for the platform's default place
    const char *start_name;   // leaf proposed or selected; null for none
    const NavMenuItem *filters;
    int filter_count;
    int initial_filter; // index into FILTERS
    // Called when the person picks an entry of the filter pop-up; may be null.
    void (*filter_picked)(const NavMenuItem *item);
    // Answers 1 when the entry is to be shown; null shows all. SPEC is null for an item that is no file.
    int (*shows)(const FSSpec *spec);
    NavUse use; // of navChooseApplication: those for it are offered first
    // Takes an update or activate event of the shell's own windows while the chooser is up; may be null. The
    // fronts of this host never call it: such an event waits in the queue until the chooser has closed.
    void (*window_event)(const EventRecord *event);
};

// Shows the chooser until the person chooses or cancels: 1 and the absolute POSIX path of the choice, or 0
// when it was cancelled or the path does not fit.
int NavRun(const NavRequest *request, BoundedBuffer &posix_path);

} // namespace quillon

#endif
