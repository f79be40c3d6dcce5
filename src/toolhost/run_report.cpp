#include "toolhost/run_report.h"

namespace toolhost {

RunReport report_run(int pages, const ProblemList &problems, std::uint64_t milliseconds) {
    RunReport report;
    report.numbers = std::to_string(pages);
    for (int kind = 0; kind < problem_kinds; kind++)
        report.numbers += " " + std::to_string(problems.count(static_cast<ProblemKind>(kind)));
    report.numbers += " " + std::to_string(milliseconds);
    report.problems = problems.write();
    return report;
}

} // namespace toolhost
