// Path conversion between Unix paths (/Volume/dir/file, blanks substituted), HFS paths (Volume:dir:file),
// file locations and POSIX paths. Output buffers take up to 1,024 bytes; a conversion whose result does not
// fit leaves the output empty.
#ifndef QUILLON_FILES_PATHS_H
#define QUILLON_FILES_PATHS_H

#include <cstdint>

#include "toolbox/bounded.h"
#include "toolbox/files.h"

namespace quillon {

// Unix path to HFS path. 1, or 0 when the result does not fit DST (which is then empty).
int convert_path(const char *src, BoundedBuffer &dst);
// PATH made absolute against curr_dir; returns DST's text. PATH may be DST's own text. Empty when it does not
// fit.
const char *add_current_dir(BoundedBuffer &dst, const char *path);
void convert_to_space(char *text);
void convert_space(char *text);
int get_macpath_by_dirid(std::int16_t volume, std::int32_t dir_id, BoundedBuffer &out);
int get_unixpath_by_dirid(std::int16_t volume, std::int32_t dir_id, BoundedBuffer &out);
int FSSpecToMacPath(const FSSpec *spec, BoundedBuffer &out);
int FSSpecToUnixPath(const FSSpec *spec, BoundedBuffer &out);
// LEAF may be null. 1 only when the file-system call reports no error.
int UnixToFSS(const char *path, const char *leaf, FSSpec *spec);
OSErr MacFolderToPosixDir(const char *mac_folder, BoundedBuffer &out);
const char *MacFileToPosixFile(const char *mac_path, BoundedBuffer &out);
const char *UnixFileToPosixFile(const char *path, BoundedBuffer &out);
const char *UnixFolderToPosixFolder(const char *path, BoundedBuffer &out);
// A POSIX path to a Unix path, blanks substituted. 0 when it is not absolute, names a file directly in the
// root folder, or does not fit.
int PosixToUnixPath(const char *posix_path, BoundedBuffer &out);
int has_extension(const char *name, const char *extension);
// 0 when the file exists, -1 when not; MODE is ignored. A folder tests as absent.
int access(const char *path, int mode);
// 1 when an absolute Unix path names a file; one look at the disk.
int file_exists(const char *path);
int CanIWrite(const char *mac_path);
int UnixPathToFolder(const char *path, FSSpec *spec);
// 1 and the folder's own id when the location names a folder.
int folder_id(const FSSpec *spec, std::int32_t *dir_id);
int mydir_p(const char *src, BoundedBuffer &dst);
void simplify_directory(BoundedBuffer &path);
// The binaries folder, kept in a static 256-byte buffer; null when the application's folder has no Unix path.
const char *SetTilde();
void SetSystemFontPath();
char *mygetenv(const char *name);
int chdir(const char *path);
// "/a/b/c" into folder "/a/b" and leaf "c"; a path without "/" gives an empty folder and itself.
int split_path(const char *path, BoundedBuffer &folder, BoundedBuffer &leaf);

} // namespace quillon

#endif
