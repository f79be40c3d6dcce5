// Starting another program.
#ifndef QUILLON_COMMON_SPAWN_H
#define QUILLON_COMMON_SPAWN_H

#include <string>
#include <sys/types.h>
#include <vector>

namespace common {

// Whose group and session the program belongs to: those of this process, a group of its own, or a session of
// its own.
enum class Place { here, own_group, own_session };

// Where the standard output or error of a program goes that goes nowhere.
constexpr int nowhere = -1;

struct Spawn {
    std::string program;                  // an absolute path
    std::vector<std::string> words;       // the first is the program's name for itself
    std::vector<std::string> environment; // NAME=value; this process's own when it is empty
    Place place = Place::here;
    int output = 2, error = 2; // descriptors of this process, or nowhere
    int channel = -1; // a descriptor of this process that is number channel_descriptor there; -1 for none
};
constexpr int channel_descriptor = 3;

// Starts the program with empty input, with no signal blocked and with the default action for a broken pipe.
// A child that is stopped before it has become the program is woken, a second later.
// Returns 0 and its process id in PROCESS, or the errno that kept it from starting.
int spawn(Spawn wanted, pid_t *process);

// Returns the variables of this process, without those that Quillon's programs tell each other something
// with.
std::vector<std::string> plain_environment();
// Returns these and the ones that a private shell hands on to Quillon's own programs.
std::vector<std::string> own_environment();

} // namespace common

#endif
