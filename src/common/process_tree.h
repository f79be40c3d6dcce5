// Ending processes together with all that they have started. A process is signalled through a descriptor of
// its own, after a look that it still is the one that was meant, so that a process id that is given anew hits
// nobody.
#ifndef QUILLON_COMMON_PROCESS_TREE_H
#define QUILLON_COMMON_PROCESS_TREE_H

#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace common {

// The name that the guard of a run has for the host.
inline constexpr const char *guard_name = "quillon-guard";

// What the host knows of a process by its id: its state's letter, its parent and the first 15 bytes of its
// name. The state is 0 when there is no such process.
struct ProcessStatus {
    char state = 0;
    pid_t parent = 0;
    std::string name;
    bool runs() const { return state != 0 && state != 'Z' && state != 'X'; }
};
ProcessStatus status_of_process(pid_t process);

// Returns the children of every thread of PROCESS, dead ones that nobody has waited for included.
std::vector<pid_t> children_of(pid_t process);

// Sends SIGKILL to every process below ROOT once, and stops each before its children are looked for, since a
// stopped process makes no more. A child of ROOT itself that has the name SPARED lives on; what is below it
// does not. True when there was something to kill: a caller that wants nothing left, and whose ROOT takes
// orphans in, calls again until it answers false.
bool kill_below(pid_t root, const std::string &spared = {});

// Kills PROCESS and everything below it when IS_MEANT answers true, which is asked once no other process can
// be hit. False when it does not run or is not meant, or is this process.
bool kill_tree(pid_t process, const std::function<bool()> &is_meant);

// Ends a tool host, a child of this process that nobody has waited for, with everything of its run: first
// what is below the host and its guard, then the host. The guard, which wakes when its host dies, has a
// second to give the output of the run before back; then it is killed too. Waits for that. Any other program
// is ended with what is below it at that moment.
void end_tool(pid_t host);

} // namespace common

#endif
