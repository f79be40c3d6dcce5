// These procedures convert between the four forms in which a file is named: Unix paths (/Volume/dir/file,
// with blanks replaced by the byte space_char), HFS paths (Volume:dir:file), file locations (FSSpec) and the
// host's POSIX paths. Intermediate paths hold up to 1,023 bytes. A conversion whose result does not fit
// leaves the output empty.
#ifndef QUILLON_FILES_PATHS_H
#define QUILLON_FILES_PATHS_H

#include <cstdint>

#include "toolbox/bounded.h"
#include "toolbox/files.h"

namespace quillon {

// Turns the Unix path SRC into an HFS path. Returns 1, or 0 when the result does not fit DST.
int convert_path(const char *src, BoundedBuffer &dst);
// Makes the Unix path PATH absolute: a relative one is taken as below curr_dir. Returns the text of DST,
// which is empty when the result does not fit. PATH may be the text of DST itself.
const char *add_current_dir(BoundedBuffer &dst, const char *path);
// Replace in place: each substitute (space_char) by a blank, and each blank by the substitute.
void convert_to_space(char *text);
void convert_space(char *text);
// Write the HFS or the Unix path of the folder DIR_ID on VOLUME into OUT. Return 1, or 0 when there is no
// such folder or its path does not fit; OUT then holds no path.
int get_macpath_by_dirid(std::int16_t volume, std::int32_t dir_id, BoundedBuffer &out);
int get_unixpath_by_dirid(std::int16_t volume, std::int32_t dir_id, BoundedBuffer &out);
// Write the HFS or the Unix path of a file location into OUT. Return 1 always; OUT is empty when the folder
// is missing or the path does not fit.
int FSSpecToMacPath(const FSSpec *spec, BoundedBuffer &out);
int FSSpecToUnixPath(const FSSpec *spec, BoundedBuffer &out);
// Makes the file location of PATH (a Unix path), or of LEAF in the folder PATH when LEAF is not null. Returns
// 1 when that file or folder exists, else 0.
int UnixToFSS(const char *path, const char *leaf, FSSpec *spec);
// Turns the HFS path of a folder, with or without a final ":", into a POSIX path. Returns noErr, or the error
// of the file system; OUT is then empty.
OSErr MacFolderToPosixDir(const char *mac_folder, BoundedBuffer &out);
// Turn the path of a file into a POSIX path and return the text of OUT. The file need not exist, but its
// folder must; otherwise, or when the path does not fit, the text is empty. The first takes an HFS path, and
// takes a path without ":" as a Unix path; the second takes a Unix path.
const char *MacFileToPosixFile(const char *mac_path, BoundedBuffer &out);
const char *UnixFileToPosixFile(const char *path, BoundedBuffer &out);
// Turns the Unix path of a folder into a POSIX path and returns the text of OUT; it is empty when there is no
// such folder.
const char *UnixFolderToPosixFolder(const char *path, BoundedBuffer &out);
// Returns 1 when NAME ends with EXTENSION (which includes its dot, and whose letter case counts), else 0.
int has_extension(const char *name, const char *extension);
// Tests whether the file at the Unix path PATH exists: 0 when it does, -1 when not. A folder counts as
// missing. MODE is ignored. When PATH and curr_dir together take more than 511 bytes, errno is ENAMETOOLONG.
int access(const char *path, int mode);
// Returns 1 when a file, and not a folder, is at the absolute Unix path PATH, else 0.
int file_exists(const char *path);
// Returns 0 when the file at the HFS path is open, and 1 when it is not open or does not exist.
int CanIWrite(const char *mac_path);
// Makes the file location of the folder at the Unix path PATH. Returns 1, or 0 when there is no such folder.
int UnixPathToFolder(const char *path, FSSpec *spec);
// Writes the id of the folder at the location SPEC into DIR_ID. Returns 1, or 0 when SPEC names no folder.
int folder_id(const FSSpec *spec, std::int32_t *dir_id);
// Copies SRC into DST, which is empty when it does not fit. Returns 1 always.
int mydir_p(const char *src, BoundedBuffer &dst);
// Rewrites a Unix path of at most 255 bytes in its canonical form. The path stays as it is when the form is
// longer or when the path cannot be looked up.
void simplify_directory(BoundedBuffer &path);
// Finds the binaries folder from the shell's own place, and sets contentsFolder and shortroot. Returns the
// folder's Unix path in a static buffer of 256 bytes; null when there is none or it does not fit.
const char *SetTilde();
// Sets SYSTEMFONTPATH to the Unix path of the system's font folder; empty when there is none.
void SetSystemFontPath();
// Returns the value of the setting NAME in a block that the caller frees with free(); null when it is not
// set.
char *mygetenv(const char *name);
// Stands in for the library's procedure of this name, does nothing and returns 0.
int chdir(const char *path);
// 1 when the file name NAME has more than 29 characters (of one or more bytes each), else 0.
int is_long_name(const char *name);
// Splits PATH at its last "/": "/a/b/c" gives folder "/a/b" and leaf "c", and "c" gives an empty folder.
// Returns 1, or 0 when a part does not fit.
int split_path(const char *path, BoundedBuffer &folder, BoundedBuffer &leaf);

} // namespace quillon

#endif
