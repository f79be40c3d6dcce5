#include "toolhost/recorder.h"

#include <unistd.h>

#include "common/path_forms.h"

namespace toolhost {

OwnList begin_own_list(const std::string &path, const std::vector<std::string> &names) {
    OwnList list;
    list.path = path;
    for (const std::string &name : names)
        list.early.push_back(common::folder_above(path) + "/" + common::leaf_of(name));
    list.older = put_aside(path);
    return list;
}

void take_away(const OwnList &list, pid_t engine) {
    if (list.path.empty())
        return;
    if (list.older.path.empty())
        unlink(list.path.c_str());
    else
        give_back(list.older);
    for (const std::string &early : list.early)
        unlink((early + std::to_string(engine) + ".fls").c_str());
}

} // namespace toolhost
