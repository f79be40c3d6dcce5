#include "toolhost/kept_output.h"

#include <cstdio>
#include <unistd.h>

#include "common/host_files.h"
#include "common/path_forms.h"

namespace toolhost {

KeptOutput put_aside(const std::string &path) {
    KeptOutput kept = {path, common::folder_above(path) + "/." + common::leaf_of(path) + ".before"};
    // Left by a run of which nobody was there to tell the end.
    if (common::is_regular_file(kept.aside) && !common::is_regular_file(path))
        give_back(kept);
    if (!common::is_regular_file(path) || std::rename(path.c_str(), kept.aside.c_str()) != 0)
        kept = {};
    return kept;
}

void give_back(const KeptOutput &kept) {
    if (!kept.path.empty())
        std::rename(kept.aside.c_str(), kept.path.c_str());
}

void drop_kept(const KeptOutput &kept) {
    if (!kept.path.empty())
        unlink(kept.aside.c_str());
}

} // namespace toolhost
