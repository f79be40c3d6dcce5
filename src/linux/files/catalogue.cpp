// The catalogue: locations, entries by name and by index, aliases.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <list>
#include <vector>

#include "common/host_files.h"
#include "linux/files/host.h"

namespace quillon {

namespace {

struct Entry {
    std::uint32_t offset;
    std::uint16_t length;
    std::uint8_t kind; // DT_DIR, DT_LNK, or DT_REG for everything else
};

// The entries of a folder, read once for a whole walk by index.
struct Listing {
    std::int16_t volume;
    std::int32_t folder;
    std::string path, names;
    std::vector<Entry> entries;
    std::vector<std::uint32_t> files; // the numbers of the entries that are no folders

    std::string_view name(const Entry &entry) const { return {names.data() + entry.offset, entry.length}; }
};

// The number of walks that can go on at once, as in folders inside each other. The last used is first.
constexpr std::size_t listing_limit = 256;

std::list<Listing> &listings() {
    static std::list<Listing> kept;
    return kept;
}

struct FoldTable {
    unsigned char to[256];
    constexpr FoldTable() : to() {
        for (unsigned i = 0; i < 256; i++)
            to[i] = static_cast<unsigned char>(i >= 'A' && i <= 'Z' ? i + 32 : i);
    }
};
constexpr FoldTable fold;

bool comes_before(std::string_view a, std::string_view b) {
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; i++) {
        const unsigned char x = fold.to[static_cast<unsigned char>(a[i])];
        const unsigned char y = fold.to[static_cast<unsigned char>(b[i])];
        if (x != y)
            return x < y;
    }
    return a.size() != b.size() ? a.size() < b.size() : a < b;
}

std::uint8_t kind_of(DIR *folder, const dirent *entry) {
    if (entry->d_type != DT_UNKNOWN)
        return entry->d_type == DT_DIR || entry->d_type == DT_LNK ? entry->d_type : std::uint8_t{DT_REG};
    struct stat info;
    if (::fstatat(::dirfd(folder), entry->d_name, &info, AT_SYMLINK_NOFOLLOW) != 0)
        return DT_REG;
    return S_ISDIR(info.st_mode) ? DT_DIR : S_ISLNK(info.st_mode) ? DT_LNK : DT_REG;
}

bool read_folder(Listing &listing) {
    DIR *const folder = ::opendir(listing.path.c_str());
    if (!folder)
        return false;
    while (const dirent *const entry = ::readdir(folder)) {
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..")
            continue;
        listing.entries.push_back({static_cast<std::uint32_t>(listing.names.size()),
                                   static_cast<std::uint16_t>(name.size()), kind_of(folder, entry)});
        listing.names += name;
    }
    ::closedir(folder);
    std::sort(listing.entries.begin(), listing.entries.end(),
              [&](const Entry &a, const Entry &b) { return comes_before(listing.name(a), listing.name(b)); });
    for (std::size_t i = 0; i < listing.entries.size(); i++)
        if (listing.entries[i].kind != DT_DIR)
            listing.files.push_back(static_cast<std::uint32_t>(i));
    return true;
}

// The listing for a walk over the folder; ANEW (at index 1) reads it again. Null when it cannot be read.
Listing *listing_for(std::int16_t volume, std::int32_t folder, bool anew) {
    std::list<Listing> &kept = listings();
    for (auto place = kept.begin(); place != kept.end(); ++place) {
        if (place->volume != volume || place->folder != folder)
            continue;
        if (anew) {
            kept.erase(place);
            break;
        }
        kept.splice(kept.begin(), kept, place);
        return &kept.front();
    }
    Listing fresh{volume, folder, {}, {}, {}, {}};
    if (!FolderPath(volume, folder, fresh.path) || fresh.path.empty() || !read_folder(fresh))
        return nullptr;
    kept.push_front(std::move(fresh));
    if (kept.size() > listing_limit)
        kept.pop_back();
    return &kept.front();
}

void put_name(unsigned char *to, std::string_view host_name) {
    if (!to)
        return;
    const std::string name = ShellName(host_name);
    to[0] = static_cast<unsigned char>(name.size());
    std::memcpy(to + 1, name.data(), name.size());
}

void clear_results(CInfoPBRec *block) {
    block->ioFlAttrib = 0;
    block->ioFlFndrInfo = FInfo{};
}

std::int32_t root_or(std::int32_t id) {
    return id == 0 ? volume_root_id : id;
}

OSErr folder_itself(CInfoPBRec *block) {
    std::string path, name;
    std::int32_t parent = 0;
    struct stat info;
    clear_results(block);
    if (!FolderPath(block->ioVRefNum, block->ioDirID, path) ||
        !FolderEntry(block->ioVRefNum, block->ioDirID, name, parent))
        return dirNFErr;
    if (::stat(path.c_str(), &info) != 0 || !S_ISDIR(info.st_mode))
        return dirNFErr;
    put_name(block->ioNamePtr, name);
    block->ioFlAttrib = kioFlAttribDir;
    block->ioDirID = root_or(block->ioDirID);
    block->ioFlParID = parent;
    return noErr;
}

OSErr entry_by_index(CInfoPBRec *block, bool files_only, bool with_finder) {
    const std::int32_t folder = root_or(block->ioDirID);
    const Listing *const listing = listing_for(block->ioVRefNum, folder, block->ioFDirIndex == 1);
    clear_results(block);
    if (!listing)
        return dirNFErr;
    const std::size_t index = static_cast<std::size_t>(block->ioFDirIndex) - 1;
    if (index >= (files_only ? listing->files.size() : listing->entries.size())) {
        listings().pop_front(); // the walk is over
        return fnfErr;
    }
    const Entry &entry = listing->entries[files_only ? listing->files[index] : index];
    const std::string_view name = listing->name(entry);
    put_name(block->ioNamePtr, name);
    block->ioFlParID = folder;
    if (entry.kind == DT_DIR) {
        block->ioFlAttrib = kioFlAttribDir;
        block->ioDirID = FolderId(block->ioVRefNum, folder, name, true);
        return noErr;
    }
    if (with_finder) {
        struct stat info;
        const std::string path = listing->path + "/" + std::string(name);
        if (::stat(path.c_str(), &info) == 0)
            FinderInfo(path, info, &block->ioFlFndrInfo);
    }
    if (entry.kind == DT_LNK)
        block->ioFlFndrInfo.fdFlags |= kIsAlias;
    return noErr;
}

OSErr entry_by_name(CInfoPBRec *block, bool files_only, bool with_finder) {
    clear_results(block);
    if (!block->ioNamePtr)
        return bdNamErr;
    const std::string_view name(reinterpret_cast<const char *>(block->ioNamePtr + 1), block->ioNamePtr[0]);
    std::string path;
    FSSpec spec;
    OSErr error = name.empty() ? OSErr{bdNamErr} : HostPath(block->ioVRefNum, block->ioDirID, name, path);
    if (error == noErr)
        error = LocationOf(path, &spec);
    struct stat info;
    if (error != noErr)
        return error;
    if (::stat(path.c_str(), &info) != 0)
        return fnfErr;
    if (S_ISDIR(info.st_mode) && files_only)
        return fnfErr;
    block->ioVRefNum = spec.vRefNum;
    block->ioFlParID = spec.parID;
    if (S_ISDIR(info.st_mode)) {
        block->ioFlAttrib = kioFlAttribDir;
        block->ioDirID = spec.parID == volume_parent_id
                             ? volume_root_id
                             : FolderId(spec.vRefNum, spec.parID,
                                        std::string_view(path).substr(path.rfind('/') + 1), true);
        return noErr;
    }
    if (with_finder)
        FinderInfo(path, info, &block->ioFlFndrInfo);
    if (files_only && common::file_is_open(path))
        block->ioFlAttrib |= kioFlAttribFileOpen;
    return noErr;
}

OSErr look_up(CInfoPBRec *block, bool files_only, bool with_finder) {
    if (block->ioFDirIndex > 0)
        return entry_by_index(block, files_only, with_finder);
    if (block->ioFDirIndex == 0)
        return entry_by_name(block, files_only, with_finder);
    return files_only ? OSErr{fnfErr} : folder_itself(block);
}

} // namespace

OSErr PBGetCatInfoSync(CInfoPBRec *block) {
    return look_up(block, false, true);
}

OSErr PBGetCatNameSync(CInfoPBRec *block) {
    return look_up(block, false, false);
}

OSErr PBHGetFInfoSync(CInfoPBRec *block) {
    return look_up(block, true, true);
}

OSErr FSMakeFSSpec(std::int16_t vref, std::int32_t dir_id, const char *name, FSSpec *spec) {
    std::string path;
    std::memset(spec, 0, sizeof *spec);
    if (!name || !*name)
        name = ":";
    const OSErr error = HostPath(vref, dir_id, name, path);
    return error == noErr ? LocationOf(path, spec) : error;
}

int FSFileExists(const char *hfs_path) {
    std::string path;
    return HostPath(0, 0, hfs_path, path) == noErr && PosixFileExists(path.c_str());
}

int PosixFileExists(const char *posix_path) {
    struct stat info;
    if (std::strrchr(posix_path, '/') == posix_path)
        return 0;
    return ::stat(posix_path, &info) == 0 && !S_ISDIR(info.st_mode);
}

OSErr FSPathMakeSpec(const char *posix_path, FSSpec *spec) {
    std::string path;
    std::memset(spec, 0, sizeof *spec);
    return NormalPath(posix_path, path) ? LocationOf(path, spec) : OSErr{bdNamErr};
}

OSErr FSpMakeFSRef(const FSSpec *spec, FSRef *ref) {
    std::string path;
    struct stat info;
    ref->path[0] = '\0';
    const OSErr error = HostPath(*spec, path);
    if (error != noErr)
        return error;
    if (::stat(path.c_str(), &info) != 0)
        return errno == ENAMETOOLONG ? OSErr{bdNamErr} : OSErr{fnfErr};
    std::memcpy(ref->path, path.c_str(), path.size() + 1);
    return noErr;
}

OSErr FSRefMakePath(const FSRef *ref, char *path, std::size_t room) {
    const std::size_t length = strnlen(ref->path, sizeof ref->path);
    if (room > 0)
        path[0] = '\0';
    if (length == 0)
        return fnfErr;
    if (length >= room)
        return bdNamErr;
    std::memcpy(path, ref->path, length + 1);
    return noErr;
}

int HFSPathToPosix(const char *hfs_path, BoundedBuffer &posix_path) {
    std::string path;
    posix_path.clear();
    return HostPath(0, 0, hfs_path, path) == noErr && posix_path.copy(path);
}

int FSpToPosix(const FSSpec *spec, BoundedBuffer &posix_path) {
    std::string path;
    posix_path.clear();
    return HostPath(*spec, path) == noErr && posix_path.copy(path);
}

OSErr ResolveAliasFile(FSSpec *spec, int resolve_chains, int *target_is_folder, int *was_aliased) {
    std::string path, target;
    struct stat info;
    *target_is_folder = *was_aliased = 0;
    OSErr error = HostPath(*spec, path);
    if (error != noErr)
        return error;
    if (::lstat(path.c_str(), &info) != 0)
        return fnfErr;
    if (S_ISLNK(info.st_mode)) {
        char buffer[PATH_MAX];
        *was_aliased = 1;
        if (resolve_chains) {
            if (!::realpath(path.c_str(), buffer))
                return fnfErr;
            target = buffer;
        } else {
            const ssize_t length = ::readlink(path.c_str(), buffer, sizeof buffer);
            if (length <= 0 || static_cast<std::size_t>(length) >= sizeof buffer)
                return fnfErr;
            const std::string link(buffer, static_cast<std::size_t>(length));
            if (!NormalPath(link.front() == '/' ? link : path.substr(0, path.rfind('/') + 1) + link, target))
                return bdNamErr;
        }
        error = LocationOf(target, spec);
        if (error != noErr)
            return error;
        path = target;
    }
    if (::stat(path.c_str(), &info) != 0)
        return fnfErr;
    *target_is_folder = S_ISDIR(info.st_mode);
    return noErr;
}

} // namespace quillon
