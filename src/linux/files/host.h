// The names, folder ids and paths of this host, shared by the sources of the File Manager.
#ifndef QUILLON_LINUX_FILES_HOST_H
#define QUILLON_LINUX_FILES_HOST_H

#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "toolbox/files.h"

namespace quillon {

constexpr std::int32_t volume_parent_id = 1, volume_root_id = 2;

// Turn a leaf as the shell has it (byte 30 for ":", a shortened name for a long one) into the host's name,
// and back into at most 63 bytes.
std::string HostName(std::string_view name);
std::string ShellName(std::string_view host_name);

// The reference of a volume (below 0) and the id of a folder, by name. A new one is given out when ADD is
// true; 0 when none was or none is left. Whether the folder is there is not checked.
std::int16_t VolumeReference(std::string_view host_name, bool add);
std::int32_t FolderId(std::int16_t volume, std::int32_t parent, std::string_view host_name, bool add);
// Sets the absolute POSIX path of a folder; "" for folder 1, the parent of all volumes. False for a reference
// or an id that was never given out.
bool FolderPath(std::int16_t volume, std::int32_t id, std::string &posix_path);
// Sets the folder's own name and its parent's id. False as FolderPath.
bool FolderEntry(std::int16_t volume, std::int32_t id, std::string &host_name, std::int32_t &parent);

// Set the absolute POSIX path of an HFS path or a location; nothing need be there. A relative HFS path is
// taken in folder ID of the volume (0: its root) and is nsvErr with volume 0. The results are those of
// FSMakeFSSpec.
OSErr HostPath(std::int16_t volume, std::int32_t id, std::string_view hfs_path, std::string &posix_path);
OSErr HostPath(const FSSpec &spec, std::string &posix_path);
// Makes the location of an absolute POSIX path without empty, "." and ".." components, with the results of
// FSMakeFSSpec.
OSErr LocationOf(const std::string &posix_path, FSSpec *spec);
// Takes empty, "." and ".." components out of an absolute POSIX path, as the host resolves them. False when
// PATH is not absolute, is too long, or is the root folder.
bool NormalPath(std::string_view path, std::string &normal);
// Takes the last component off a POSIX path, as ".." does; from a symbolic link it goes to the parent of the
// folder that the link leads to.
void StepUp(std::string &posix_path);

// Sets type, creator and flags of the file at the POSIX path, whose status is INFO: from its stamps, else
// judged from its contents; '????' where neither tells.
void FinderInfo(const std::string &path, const struct stat &info, FInfo *finder);

// The result code for a value of errno; noErr for 0, ioErr for one that has no code of its own.
OSErr ErrorCode(int error);

} // namespace quillon

#endif
