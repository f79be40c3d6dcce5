// The list of files that an engine's recorder writes for the host alone, where the person has asked for none.
#ifndef QUILLON_TOOLHOST_RECORDER_H
#define QUILLON_TOOLHOST_RECORDER_H

#include <string>
#include <sys/types.h>
#include <vector>

#include "toolhost/kept_output.h"

namespace toolhost {

struct OwnList {
    std::string path; // an absolute POSIX path; empty where the host asked for no list
    KeptOutput older; // a list that was there before
    // Until the engine knows its job the list has one of these names, the process id and ".fls" behind it.
    std::vector<std::string> early;
};

// Puts aside the list that lies at PATH. The engine goes by one of the names NAMES.
OwnList begin_own_list(const std::string &path, const std::vector<std::string> &names);
// Takes the list of the engine with the process id ENGINE away and gives the older one back.
void take_away(const OwnList &list, pid_t engine);

} // namespace toolhost

#endif
