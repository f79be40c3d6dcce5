// What a run tells the shell about its problems.
#ifndef QUILLON_TOOLHOST_RUN_REPORT_H
#define QUILLON_TOOLHOST_RUN_REPORT_H

#include <cstdint>
#include <string>

#include "toolhost/problem_list.h"

namespace toolhost {

struct RunReport {
    // The numbers of pages, errors, warnings, undefined references and bad boxes, and the milliseconds that
    // the run took, with blanks between. Empty when the program's messages are not understood.
    std::string numbers;
    std::string problems; // the absolute path of their file, which is the receiver's; empty for none
};

// Makes the report of a run with so many pages and these problems, whose file it writes.
RunReport report_run(int pages, const ProblemList &problems, std::uint64_t milliseconds);

} // namespace toolhost

#endif
