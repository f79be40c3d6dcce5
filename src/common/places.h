// Where things lie on this host: the folders of the user and of Quillon, and this program. All paths are
// POSIX paths.
#ifndef QUILLON_COMMON_PLACES_H
#define QUILLON_COMMON_PLACES_H

#include <string>
#include <sys/types.h>

namespace common {

// The variable of the environment that names the preferences folder of a private shell and its programs.
inline constexpr const char *private_preferences_variable = "QUILLON_PREFERENCES_FOLDER";
// The variable that is set where a program runs under a session bus that was started for it.
inline constexpr const char *own_bus_variable = "QUILLON_OWN_BUS";

// Return the user's own folders, absolute and without a final slash. They need not exist. An environment
// variable that is not an absolute path counts as not set.
std::string home_folder();   // $HOME, else the home of the user database
std::string config_folder(); // $XDG_CONFIG_HOME, else ~/.config
std::string data_folder();   // $XDG_DATA_HOME, else ~/.local/share
std::string cache_folder();  // $XDG_CACHE_HOME, else ~/.cache

// Return the places of Quillon's own files below those folders. They need not exist. The programs of a
// private shell have their preferences in a folder of its own, which a variable of their environment names.
std::string preferences_folder(); // config_folder() but for these
std::string preferences_path();   // preferences_folder()/Quillon Preferences
std::string support_folder();     // data_folder()/Quillon
std::string formats_folder();     // support_folder()/formats
std::string temporary_folder();   // $XDG_RUNTIME_DIR/quillon, else one of the user's own in $TMPDIR or /tmp
std::string transcripts_folder(); // cache_folder()/quillon
std::string snapshots_folder();   // transcripts_folder()/snapshots

// Makes the folder at PATH with mode 0700, and takes the rights of others away when it was there. False when
// PATH is then no folder of this user's own, or is a symbolic link.
bool make_private_folder(const std::string &path);

// Returns the path of the executable of a process. Empty when the process has ended or is another user's.
std::string program_of_process(pid_t process);
// Return the words that a process was started with, and its variables (NAME=value) as they were then, each
// with a zero byte behind it. Empty when the process has ended or is another user's. At most 4 MiB are read.
std::string words_of_process(pid_t process);
std::string variables_of_process(pid_t process);
// Return the executable of this process, and the folder LEVELS above it.
std::string own_program();
std::string above_own_program(int levels);

} // namespace common

#endif
