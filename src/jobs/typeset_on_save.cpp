#include "jobs/typeset_on_save.h"

#include <cstring>

#include "console/output.h"
#include "core/command_table.h"
#include "files/paths.h"
#include "settings/settings.h"
#include "state/job_scope.h"
#include "state/job_state.h"
#include "toolbox/events.h"
#include "toolbox/watching.h"

namespace quillon {

static BoundedString<256> watched; // the TeX file that the watch began for; empty while there is none

static const char *name_of(const BoundedBuffer &path) {
    const char *const slash = std::strrchr(path.c_str(), '/');
    return slash ? slash + 1 : path.c_str();
}

// Makes FILE the current TeX file, empty when there is none. The menus, which keep it too, are brought up to
// date only when they are looked at.
static void take_current_file(BoundedBuffer &file) {
    const char *const path = get_str_resource("TEXFILE");
    if (!path || !file.copy(path))
        file.clear();
}

static void say_unwatched(const BoundedBuffer &problem) {
    ml_printf("\"%s\" cannot be typeset when it is saved: %s.\n", name_of(watched), problem.c_str());
}

static void begin() {
    BoundedString<1024> main;
    BoundedString<256> problem;
    take_current_file(watched);
    UnixFileToPosixFile(watched.c_str(), main);
    if (!WatchDocument(main.empty() ? nullptr : main.c_str(), problem))
        say_unwatched(problem);
    else if (const int others = WatchedFiles() - 1; others > 0)
        ml_printf("\"%s\" and %d more of its files are watched: they are typeset when they are saved.\n",
                  name_of(watched), others);
    else if (others == 0)
        ml_printf("\"%s\" is watched: it is typeset when it is saved.\n", name_of(watched));
}

static void end() {
    BoundedString<256> problem;
    watched.clear();
    WatchDocument(nullptr, problem);
}

void watch_step() {
    if (job_running())
        return;
    BoundedString<256> current;
    if (typesetOnSave)
        take_current_file(current);
    if (current.empty()) {
        if (!watched.empty())
            end();
        return;
    }
    if (watched != current.c_str())
        begin();
    if (WatchedFileSaved())
        PostEvent(mouseDown, menu_file << 16 | file_typeset, 0, {0, 0});
}

void watch_run_begins() {
    WatchRunBegins();
}

void watch_run_ended() {
    BoundedString<1024> main;
    BoundedString<256> problem, endless;
    if (WatchedFiles() == 0)
        return;
    take_current_file(watched);
    UnixFileToPosixFile(watched.c_str(), main);
    if (!WatchRunEnded(main.c_str(), problem, endless))
        say_unwatched(problem);
    else if (!endless.empty())
        ml_printf("\"%s\" has changed during each of the last runs, so no other run follows.\n",
                  endless.c_str());
}

} // namespace quillon
