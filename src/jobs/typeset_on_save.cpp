#include "jobs/typeset_on_save.h"

#include <cstring>

#include "console/output.h"
#include "core/command_table.h"
#include "files/paths.h"
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

static void say_unwatched(const BoundedBuffer &problem) {
    ml_printf("\"%s\" cannot be typeset when it is saved: %s.\n", name_of(watched), problem.c_str());
}

static void begin() {
    BoundedString<1024> main;
    BoundedString<256> problem;
    watched.copy(dotexfile.view());
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
    if (!typesetOnSave || dotexfile.empty()) {
        if (!watched.empty())
            end();
        return;
    }
    if (watched != dotexfile.c_str())
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
    if (WatchedFiles() == 0 || !watched.copy(dotexfile.view()))
        return;
    UnixFileToPosixFile(watched.c_str(), main);
    if (!WatchRunEnded(main.c_str(), problem, endless))
        say_unwatched(problem);
    else if (!endless.empty())
        ml_printf("\"%s\" has changed during each of the last runs, so no other run follows.\n",
                  endless.c_str());
}

} // namespace quillon
