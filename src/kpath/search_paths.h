// Search paths: lists of folders named by variables, and the look-up of files of every kind along them.
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

// Null-terminated lists of folders, each ending with "/". Empty slots are null. A list that setpaths has set
// but nobody has asked for may not be made yet: read it with search_list.
extern char **path_dirs[search_path_slots];

// Sets the lists of the slots in MASK, from the settings as they stand now. A path over whole trees is
// expanded when its list is first asked for, with the folders that there are then; all others are made at
// once.
void setpaths(std::uint32_t mask);
// The list of a slot; null when it is empty.
char **search_list(int slot);
char **initialize_path_list(const char *variable, const char *preset);
// LIST is one that add_directory has made, or null with a count of 0.
void add_directory(char ***list, std::size_t *count, const char *dir);
char *expand_default(const char *path, const char *preset);
char *expand_tilde(const char *name);
char *find_path_filename(const char *name, char **list);
char *readable(const char *name);
char *testreadaccess(const char *name, int slot);
char *kpse_find_file(const char *name, int kind, int must_exist);
std::FILE *kpse_open_file(const char *name, int kind);
void kpse_set_program_name(const char *argv0, const char *progname);
void kpse_reset_program_name(const char *progname);
void kpse_init_prog();
void kpse_set_program_enabled();
void kpse_maketex_option();
extern char *kpse_program_name, *program_invocation_name_text;
char *basenamechangesuffix(const char *name, const char *old_suffix, const char *new_suffix);
void usage(const char *program);
void usagehelp(const char *const *lines);

} // namespace quillon

#endif
