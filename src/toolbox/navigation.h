// Navigation Services: the choosers for files, folders and applications.
#ifndef QUILLON_TOOLBOX_NAVIGATION_H
#define QUILLON_TOOLBOX_NAVIGATION_H

#include "toolbox/bounded.h"
#include "toolbox/events.h"
#include "toolbox/files.h"
#include "toolbox/types.h"

namespace quillon {

enum NavKind { navGetFile, navPutFile, navChooseFolder, navChooseApplication };

// A record of the filter pop-up.
struct NavMenuItem {
    OSType creator, type;
    BoundedString<512> text;
};

struct NavRequest {
    NavKind kind;
    const char *prompt;
    const char *start_folder; // POSIX path; null for the platform's default place
    const char *start_name;   // leaf proposed or selected; null for none
    const NavMenuItem *filters;
    int filter_count;
    int initial_filter; // index into FILTERS
    // The person picked a filter record (may be null).
    void (*filter_picked)(const NavMenuItem *item);
    // 1 when the entry is to be shown (may be null: all are). SPEC is null for an item that is no file.
    int (*shows)(const FSSpec *spec);
    // An update or activate event for one of the shell's own windows came while the chooser is up (may be
    // null).
    void (*window_event)(const EventRecord *event);
};

// 1 and the chosen POSIX path, or 0 when the person cancels.
int NavRun(const NavRequest *request, BoundedBuffer &posix_path);

} // namespace quillon

#endif
