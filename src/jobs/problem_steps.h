// The shell opens the person's editor at the problems of the last run.
#ifndef QUILLON_JOBS_PROBLEM_STEPS_H
#define QUILLON_JOBS_PROBLEM_STEPS_H

namespace quillon {

// 1 when there is a problem of the kinds that are shown, else 0.
int has_problems();
// Opens the file of the problem number INDEX (from 0) in the editor at its line; at the first when the line
// is not known. Does nothing when there is no such problem; a file that is no longer there is named.
void OpenProblem(int index);
// Open the problem after or before the one that was opened last, of the kinds that are shown. Behind the last
// follows the first, with a beep.
void OpenNextProblem();
void OpenPreviousProblem();

} // namespace quillon

#endif
