// What the File Manager's sources share: names, folder ids and paths of this host.
#ifndef QUILLON_LINUX_FILES_HOST_H
#define QUILLON_LINUX_FILES_HOST_H

#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "toolbox/files.h"

namespace quillon {

constexpr std::int32_t volume_parent_id = 1, volume_root_id = 2;

// A name as the host has it, from a name as the shell has it (":" from byte 30, a shortened name from the
// table), and back, at most 63 bytes.
std::string HostName(std::string_view name);
std::string ShellName(std::string_view host_name);

// Ids are handed out when a folder is first met. 0 when there is no such folder.
std::int16_t VolumeReference(std::string_view host_name, bool add);
std::int32_t FolderId(std::int16_t volume, std::int32_t parent, std::string_view host_name, bool add);
// False for a reference or an id that was never handed out.
bool FolderPath(std::int16_t volume, std::int32_t id, std::string &posix_path);
// The folder's own name and its parent's id.
bool FolderEntry(std::int16_t volume, std::int32_t id, std::string &host_name, std::int32_t &parent);

// Folder 0 of a volume is its root; volume 0 stands for no folder at all, so relative names fail with it.
OSErr HostPath(std::int16_t volume, std::int32_t id, std::string_view hfs_path, std::string &posix_path);
OSErr HostPath(const FSSpec &spec, std::string &posix_path);
// POSIX_PATH is absolute, without empty, "." and ".." components. As FSMakeFSSpec.
OSErr LocationOf(const std::string &posix_path, FSSpec *spec);
// An absolute POSIX path without empty and "." components, ".." taken as the system takes it.
bool NormalPath(std::string_view path, std::string &normal);
// Makes a path of names one by one; ".." goes to the parent of where a symbolic link points.
void StepUp(std::string &posix_path);

// Type, creator and flags of the file at PATH.
void FinderInfo(const std::string &path, const struct stat &info, FInfo *finder);
// Whether the file is open elsewhere: a write lease is refused.
bool FileIsOpen(const std::string &path);

OSErr ErrorCode(int error);

} // namespace quillon

#endif
