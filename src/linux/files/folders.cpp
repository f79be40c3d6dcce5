// Volumes, folder ids and the paths that they stand for.
//
// An id stands for a path and not for the folder there: after a folder was moved away, a new one at the same
// path has the same id.
#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <unordered_map>
#include <vector>

#include "common/host_files.h"
#include "linux/files/host.h"

namespace quillon {

namespace {

struct Folder {
    std::int16_t volume;
    std::int32_t parent;
    std::string name;
};

constexpr std::int32_t first_folder_id = 16;
constexpr std::size_t volume_limit = 32000;

struct Catalogue {
    std::vector<std::string> volumes;
    std::unordered_map<std::string, std::int16_t> volume_references;
    std::vector<Folder> folders;
    std::unordered_map<std::string, std::int32_t> folder_ids;
    std::string key; // the key of a look-up, kept so that a look-up allocates no memory
};

Catalogue &catalogue() {
    static Catalogue instance;
    return instance;
}

const std::string *volume_name(std::int16_t reference) {
    const std::size_t index = static_cast<std::size_t>(-reference) - 1;
    return reference < 0 && index < catalogue().volumes.size() ? &catalogue().volumes[index] : nullptr;
}

const Folder *folder_of(std::int16_t volume, std::int32_t id) {
    const std::int32_t index = id - first_folder_id;
    if (id < first_folder_id || static_cast<std::size_t>(index) >= catalogue().folders.size())
        return nullptr;
    const Folder *const folder = &catalogue().folders[static_cast<std::size_t>(index)];
    return folder->volume == volume ? folder : nullptr;
}

OSErr add_component(std::string &path, std::string_view component) {
    if (component.empty() || component == "..") {
        StepUp(path);
        return noErr;
    }
    if (component == ".")
        return noErr;
    if (component.find('/') != std::string_view::npos)
        return bdNamErr;
    path += '/';
    path += HostName(component);
    return noErr;
}

// Gives out ids for the folders on the way to PARENT, which is there, and sets its volume and id.
OSErr intern(std::string_view parent, std::int16_t &volume, std::int32_t &id) {
    std::size_t at = parent.find('/', 1);
    volume = VolumeReference(parent.substr(1, at == std::string_view::npos ? at : at - 1), true);
    id = volume_root_id;
    while (volume != 0 && id != 0 && at != std::string_view::npos) {
        const std::size_t end = parent.find('/', at + 1);
        id = FolderId(volume, id, parent.substr(at + 1, end == std::string_view::npos ? end : end - at - 1),
                      true);
        at = end;
    }
    return static_cast<OSErr>(volume != 0 && id != 0 ? noErr : nsvErr);
}

void set_leaf(FSSpec *spec, std::string_view host_name) {
    const std::string name = ShellName(host_name);
    spec->name[0] = static_cast<unsigned char>(name.size());
    std::memcpy(spec->name + 1, name.data(), name.size());
}

OSErr volume_location(const std::string &path, FSSpec *spec) {
    struct stat info;
    if (::stat(path.c_str(), &info) != 0)
        return nsvErr;
    // A file directly in the root folder belongs to no volume.
    if (!S_ISDIR(info.st_mode))
        return bdNamErr;
    spec->vRefNum = VolumeReference(std::string_view(path).substr(1), true);
    spec->parID = volume_parent_id;
    set_leaf(spec, std::string_view(path).substr(1));
    return static_cast<OSErr>(spec->vRefNum != 0 ? noErr : nsvErr);
}

} // namespace

std::int16_t VolumeReference(std::string_view host_name, bool add) {
    Catalogue &c = catalogue();
    c.key = host_name;
    const auto known = c.volume_references.find(c.key);
    if (known != c.volume_references.end())
        return known->second;
    if (!add || host_name.empty() || c.volumes.size() >= volume_limit)
        return 0;
    c.volumes.push_back(c.key);
    const auto reference = static_cast<std::int16_t>(-static_cast<int>(c.volumes.size()));
    c.volume_references.emplace(c.key, reference);
    return reference;
}

std::int32_t FolderId(std::int16_t volume, std::int32_t parent, std::string_view host_name, bool add) {
    Catalogue &c = catalogue();
    c.key.assign(reinterpret_cast<const char *>(&volume), sizeof volume);
    c.key.append(reinterpret_cast<const char *>(&parent), sizeof parent);
    c.key.append(host_name);
    const auto known = c.folder_ids.find(c.key);
    if (known != c.folder_ids.end())
        return known->second;
    if (!add || host_name.empty() ||
        c.folders.size() >= static_cast<std::size_t>(INT32_MAX - first_folder_id))
        return 0;
    c.folders.push_back({volume, parent, std::string(host_name)});
    const auto id = static_cast<std::int32_t>(c.folders.size()) - 1 + first_folder_id;
    c.folder_ids.emplace(c.key, id);
    return id;
}

bool FolderEntry(std::int16_t volume, std::int32_t id, std::string &host_name, std::int32_t &parent) {
    if (id == 0 || id == volume_root_id) {
        const std::string *const name = volume_name(volume);
        if (!name)
            return false;
        host_name = *name;
        parent = volume_parent_id;
        return true;
    }
    const Folder *const folder = folder_of(volume, id);
    if (!folder)
        return false;
    host_name = folder->name;
    parent = folder->parent;
    return true;
}

bool FolderPath(std::int16_t volume, std::int32_t id, std::string &posix_path) {
    const std::string *const root = volume_name(volume);
    if (!root)
        return false;
    if (id == volume_parent_id) {
        posix_path.clear();
        return true;
    }
    std::vector<const std::string *> names;
    while (id != 0 && id != volume_root_id) {
        const Folder *const folder = folder_of(volume, id);
        if (!folder)
            return false;
        names.push_back(&folder->name);
        id = folder->parent;
    }
    posix_path = "/" + *root;
    for (std::size_t i = names.size(); i-- > 0;)
        (posix_path += '/') += *names[i];
    return true;
}

void StepUp(std::string &posix_path) {
    struct stat info;
    char target[PATH_MAX];
    if (::lstat(posix_path.c_str(), &info) == 0 && S_ISLNK(info.st_mode) &&
        ::realpath(posix_path.c_str(), target))
        posix_path = target;
    const std::size_t slash = posix_path.rfind('/');
    posix_path.resize(slash == std::string::npos ? 0 : slash);
}

OSErr HostPath(std::int16_t volume, std::int32_t id, std::string_view hfs_path, std::string &posix_path) {
    posix_path.clear();
    const std::size_t colon = hfs_path.find(':');
    const bool relative = colon == 0 || colon == std::string_view::npos;
    if (relative) {
        if (volume == 0)
            return nsvErr;
        if (!FolderPath(volume, id, posix_path))
            return dirNFErr;
        hfs_path.remove_prefix(colon == 0 ? 1 : 0);
    }
    for (bool first = true; !hfs_path.empty(); first = false) {
        const std::size_t end = hfs_path.find(':');
        const OSErr error = add_component(posix_path, hfs_path.substr(0, end));
        if (error != noErr)
            return error;
        if (first && !relative && posix_path.empty())
            return bdNamErr;
        hfs_path.remove_prefix(end == std::string_view::npos ? hfs_path.size() : end + 1);
    }
    return static_cast<OSErr>(posix_path.empty() || posix_path.size() >= PATH_MAX ? bdNamErr : noErr);
}

OSErr HostPath(const FSSpec &spec, std::string &posix_path) {
    if (!FolderPath(spec.vRefNum, spec.parID, posix_path))
        return static_cast<OSErr>(volume_name(spec.vRefNum) ? dirNFErr : nsvErr);
    const std::string_view leaf(reinterpret_cast<const char *>(spec.name + 1), spec.name[0]);
    if (leaf.empty())
        return static_cast<OSErr>(posix_path.empty() ? bdNamErr : noErr);
    if (leaf.size() > 63 || leaf.find('/') != std::string_view::npos || leaf == "." || leaf == "..")
        return bdNamErr;
    (posix_path += '/') += HostName(leaf);
    return noErr;
}

OSErr LocationOf(const std::string &posix_path, FSSpec *spec) {
    std::memset(spec, 0, sizeof *spec);
    const std::size_t slash = posix_path.rfind('/');
    if (posix_path.size() < 2 || slash == std::string::npos)
        return bdNamErr;
    if (slash == 0)
        return volume_location(posix_path, spec);
    const std::string parent = posix_path.substr(0, slash);
    const std::string_view leaf = std::string_view(posix_path).substr(slash + 1);
    struct stat info;
    OSErr result = noErr;
    if (leaf.size() > NAME_MAX || posix_path.size() >= PATH_MAX)
        return bdNamErr;
    if (::stat(posix_path.c_str(), &info) != 0) {
        if (!common::is_folder(parent))
            return static_cast<OSErr>(common::is_folder(parent.substr(0, parent.find('/', 1))) ? dirNFErr
                                                                                               : nsvErr);
        result = fnfErr;
    }
    const OSErr error = intern(parent, spec->vRefNum, spec->parID);
    if (error != noErr)
        return error;
    set_leaf(spec, leaf);
    return result;
}

bool NormalPath(std::string_view path, std::string &normal) {
    normal.clear();
    if (path.empty() || path.front() != '/' || path.size() >= PATH_MAX)
        return false;
    while (!path.empty()) {
        const std::size_t end = path.find('/');
        const std::string_view component = path.substr(0, end);
        path.remove_prefix(end == std::string_view::npos ? path.size() : end + 1);
        if (component == "..")
            StepUp(normal);
        else if (!component.empty() && component != ".")
            (normal += '/') += component;
    }
    return !normal.empty();
}

OSErr ErrorCode(int error) {
    switch (error) {
    case 0:
        return noErr;
    case EACCES:
    case EPERM:
        return permErr;
    case EROFS:
        return wPrErr;
    case EEXIST:
        return dupFNErr;
    case ENAMETOOLONG:
        return bdNamErr;
    case ENOTDIR:
        return dirNFErr;
    case ENOENT:
    case ELOOP:
    case EISDIR:
        return fnfErr;
    default:
        return ioErr;
    }
}

} // namespace quillon
