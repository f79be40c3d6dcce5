// The output of the run before: put aside while a run goes on, and given back when that run ends without a
// whole one.
#ifndef QUILLON_TOOLHOST_KEPT_OUTPUT_H
#define QUILLON_TOOLHOST_KEPT_OUTPUT_H

#include <string>

namespace toolhost {

struct KeptOutput {
    std::string path;  // absolute POSIX path of the output; empty: nothing is kept
    std::string aside; // where it stands meanwhile, in the same folder
};

// Puts the file at PATH aside. What an earlier run left aside there is given back first. The result has an
// empty path when there is no such file or it cannot be moved.
KeptOutput put_aside(const std::string &path);
// Puts the kept file back in its place, over whatever stands there.
void give_back(const KeptOutput &kept);
// Removes the kept file.
void drop_kept(const KeptOutput &kept);

} // namespace toolhost

#endif
