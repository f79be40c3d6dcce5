#include "jobs/problem_steps.h"

#include "console/output.h"
#include "files/paths.h"
#include "front/front.h"
#include "jobs/after_run.h"
#include "state/job_state.h"
#include "tools/problems.h"

namespace quillon {

int has_problems() {
    for (int i = 0; i < problem_count(); i++)
        if (is_of_kinds(problem_at(i), shown_problem_kinds))
            return 1;
    return 0;
}

// Sets editfile to the POSIX path FILE. Returns 0, after a message, when there is no such file or its path
// does not fit.
static int take_file(const char *file) {
    FSSpec spec;
    BoundedString<1024> path;
    if (FSPathMakeSpec(file, &spec) != noErr) {
        ml_printf("I can't find the file %s.\n", file);
        return 0;
    }
    FSSpecToUnixPath(&spec, path);
    if (!path.empty() && editfile.copy(path.view()))
        return 1;
    ml_printf("The path \"%s\" is too long for Quillon.\n", file);
    return 0;
}

void OpenProblem(int index) {
    if (index < 0 || index >= problem_count())
        return;
    const ProblemRecord problem = problem_at(index);
    current_problem = index;
    if (front->problem_opened)
        front->problem_opened(index);
    if (!take_file(problem.file.data()))
        return;
    editlinenumber = problem.line > 0 ? problem.line : 1;
    OpenEditorAtPlace();
}

// Opens the next problem that is shown in the direction STEP (1 or -1), round the ends of the list.
static void go_on(int step) {
    const int count = problem_count();
    int index = current_problem < 0 && step < 0 ? 0 : current_problem;
    for (int i = 0; i < count; i++) {
        index += step;
        if (index < 0 || index >= count) {
            index = step > 0 ? 0 : count - 1;
            if (current_problem >= 0)
                SysBeep(1);
        }
        if (is_of_kinds(problem_at(index), shown_problem_kinds)) {
            OpenProblem(index);
            return;
        }
    }
}

void OpenNextProblem() {
    go_on(1);
}

void OpenPreviousProblem() {
    go_on(-1);
}

} // namespace quillon
