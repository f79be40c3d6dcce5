// The problems of the last run whose messages its tool understands.
#ifndef QUILLON_TOOLS_PROBLEMS_H
#define QUILLON_TOOLS_PROBLEMS_H

#include <string_view>

#include "toolbox/apple_events.h"
#include "toolbox/bounded.h"
#include "toolbox/problem_records.h"

namespace quillon {

constexpr int most_problems = 100000;

// The kinds in the order in which the tool counts them, and the bit of each in a set of kinds.
constexpr char problem_kinds[] = "ewrb";
constexpr int problem_kind_count = 4;
constexpr unsigned all_problem_kinds = 15;

// The kinds that the person wants to see: the window's filter, which the next and the previous problem obey.
extern unsigned shown_problem_kinds;
// The problem that was gone to last, -1 when there is none.
extern int current_problem;

// Takes what a tool's report EVENT tells of its run: the numbers and the file of its problems, which is
// deleted. Only a file of the transcripts folder is read. A report without numbers changes nothing.
void take_problems(const AppleEvent *event);
// Returns how many problems are kept, at most most_problems.
int problem_count();
// Returns the problem number INDEX, from 0. Its texts hold until the next report.
const ProblemRecord &problem_at(int index);
// Returns how many problems of a kind (0 to 3) the run had, those that are not kept among them.
long problems_of_kind(int kind);
// 1 when the kind of the problem is in the set of kinds.
int is_of_kinds(const ProblemRecord &problem, unsigned kinds);
// The records of all problems that are kept, one behind the other.
std::string_view problem_records();
// Forgets how the last run ended, but not its problems, since another command begins.
void forget_run_summary();
// Write one line into LINE: pages, errors, undefined references, warnings, bad boxes, without those that
// there are none of, and the time. The first sums the run up whose problems these are, and its line is empty
// when there was none. The second does so for the last command alone, and its line is empty when its tool
// reported nothing.
void last_run_summary(BoundedBuffer &line);
void command_summary(BoundedBuffer &line);

} // namespace quillon

#endif
