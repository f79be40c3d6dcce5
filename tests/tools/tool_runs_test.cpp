// When the cursor comes back after a companion program.
#include "tools/tool_runs.h"

#include <gtest/gtest.h>

#include "state/job_state.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"
#include "tools/processes.h"

namespace quillon {
namespace {

OSType watched;
std::vector<int> running_at_restore; // whether the tool still ran, for each time that the arrow came back

TEST(ToolRuns, TheCursorComesBackBeforeTheToolHasGoneButAfterBibTeX) {
    const test::TemporaryHome home;
    const test::RecordingFront front_kept;
    home.preferences("SPACECHAR=31\n");
    bibexe.copy(home.silent_bundle("tools/bibtex", "BIBT"));
    mpostexe.copy(home.silent_bundle("tools/mpost", "MPST"));
    static Front watching;
    watching = *front;
    watching.set_cursor = [](CursorShape shape) {
        if (shape == arrowCursor)
            running_at_restore.push_back(IsSigRunning(watched, nullptr));
    };
    front = &watching;
    running_at_restore.clear();
    watched = four("BIBT");
    RunBibTeX(home.file("work/paper.aux").c_str());
    EXPECT_EQ(running_at_restore, std::vector<int>{0});
    running_at_restore.clear();
    watched = four("MPST");
    RunOdocMetaPost(home.file("work/figure.mp").c_str());
    EXPECT_EQ(running_at_restore, std::vector<int>{1});
    EXPECT_EQ(IsSigRunning(watched, nullptr), 0);
}

} // namespace
} // namespace quillon
