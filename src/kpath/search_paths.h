// A search path is a list of folders that a setting names. The shell looks for files of every kind along
// them. Paths are Unix paths. A string that is returned as `char *` is a new one, which the caller frees with
// free(); the lists stay for as long as the shell runs.
#ifndef QUILLON_KPATH_SEARCH_PATHS_H
#define QUILLON_KPATH_SEARCH_PATHS_H

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace quillon {

enum SearchPathSlot {
    slot_texformats = 7,
    slot_texinputs = 8,
    slot_texfonts = 10,
    slot_texconfig = 15,
    slot_dvipsheaders = 20,
    slot_encfolder = 26,
    search_path_slots = 27
};

// The list of each slot: folders that end with "/", and a null at the end. An empty slot is null. Read a list
// through search_list, because it may not have been expanded yet.
extern char **path_dirs[search_path_slots];

// Sets the lists of the slots in MASK (bit N for slot N) from the current values of the settings. A path with
// an element "folder//", which stands for a whole tree, is expanded when its list is first asked for; all
// others at once.
void setpaths(std::uint32_t mask);
// Forgets all lists and what was expanded, for settings that have changed. Call setpaths next. Lists that
// were handed out stay valid.
void forget_paths();
// Returns the list of a slot (0 to 26); null when it is empty.
char **search_list(int slot);
// Returns the list of the search path that the setting VARIABLE holds, or PRESET when it is not set; null
// when the path is empty.
char **initialize_path_list(const char *variable, const char *preset);
// Appends a copy of DIR, with "/" at its end, to LIST and counts it. LIST is null (COUNT 0) or one that this
// procedure has made. The caller appends the final null.
void add_directory(char ***list, std::size_t *count, const char *dir);
// Returns PATH with PRESET in front when it begins with ":", or behind when it ends with ":"; PRESET when
// PATH is null.
char *expand_default(const char *path, const char *preset);
// Returns NAME with the binaries folder in place of a leading "~" component, and the folder above it in place
// of "~/..".
char *expand_tilde(const char *name);
// Returns the path of the first file NAME along LIST, or null. LIST is not used when it is null or when NAME
// is absolute, begins with "./" or "../", or holds a ":".
char *find_path_filename(const char *name, char **list);
// Returns NAME when that file exists, else null. A path that is too long is tried with each component cut to
// 255 bytes and the whole to 1,024.
char *readable(const char *name);
// Returns the path of the file NAME from the cache or along the list of SLOT, or null. Along the fonts' list
// an alias of texfonts.map is tried too. What is found goes into the cache.
char *testreadaccess(const char *name, int slot);
// Returns the path of the file NAME of KIND (1 to 28), or null. The kind gives the suffix that NAME gets when
// it has none, the slot and the database. MUST_EXIST is not used.
char *kpse_find_file(const char *name, int kind, int must_exist);
// Finds a file as kpse_find_file does and opens it for reading. On failure prints a message and ends the run
// through DoJump.
std::FILE *kpse_open_file(const char *name, int kind);
// Keep copies of the program's name for messages: ARGV0 as program_invocation_name_text, and PROGNAME (ARGV0
// when it is null) as kpse_program_name.
void kpse_set_program_name(const char *argv0, const char *progname);
void kpse_reset_program_name(const char *progname);
extern char *kpse_program_name, *program_invocation_name_text;
// Programs that look for files along search paths call these procedures when they start. They do nothing
// here.
void kpse_init_prog();
void kpse_set_program_enabled();
void kpse_maketex_option();
// Returns NAME with as many bytes cut from its end as OLD_SUFFIX has, and NEW_SUFFIX appended, in a block of
// 256 bytes that the caller frees with free(). The text is empty when it does not fit.
char *basenamechangesuffix(const char *name, const char *old_suffix, const char *new_suffix);
// Print a hint at --help, or the help text LINES (with a null at the end), and end the run through DoJump
// with status 1 or 0.
void usage(const char *program);
void usagehelp(const char *const *lines);

} // namespace quillon

#endif
