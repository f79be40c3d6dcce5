// Where things lie on this host: the user's folders, this program, what its bundle holds.
#ifndef QUILLON_COMMON_PLACES_H
#define QUILLON_COMMON_PLACES_H

#include <string>
#include <sys/types.h>

namespace common {

// The user's own folders, absolute, without a final slash. A variable that is not an absolute path counts as
// not set. None of them need exist.
std::string home_folder();
std::string config_folder(); // $XDG_CONFIG_HOME, else ~/.config
std::string data_folder();   // $XDG_DATA_HOME, else ~/.local/share
std::string cache_folder();  // $XDG_CACHE_HOME, else ~/.cache

std::string preferences_path();
std::string support_folder();     // <Application Support>/Quillon
std::string formats_folder();     // support_folder()/formats
std::string temporary_folder();   // $XDG_RUNTIME_DIR/quillon, else one of the user's own in $TMPDIR or /tmp
std::string transcripts_folder(); // cache_folder()/quillon

// Makes the folder at PATH, with mode 0700, when it is missing. False when it is not a real folder of this
// user's own that nobody else may enter.
bool make_private_folder(const std::string &path);

// The executable of a process; empty when it has gone or is another user's.
std::string program_of_process(pid_t process);
// The executable of this process, and the folder LEVELS above it.
std::string own_program();
std::string above_own_program(int levels);

} // namespace common

#endif
