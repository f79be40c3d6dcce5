#include "files/paths.h"

#include <cerrno>
#include <cstring>

#include "console/output.h"
#include "files/streams.h"
#include "settings/settings.h"
#include "state/job_state.h"

namespace quillon {

namespace {

constexpr std::size_t conversion_size = 1024;
// `access` takes at most this many bytes for a path and curr_dir together.
constexpr std::size_t access_limit = 511;
constexpr char colon_substitute = 30; // replaces a ":" in a name
constexpr char shortened_mark = 29;   // marks a name that was shortened

void replace(char *text, char from, char to) {
    for (; *text; text++)
        if (*text == from)
            *text = to;
}

char space_substitute() {
    return static_cast<char>(space_char & 0xFF);
}

int starts_with(const char *text, const char *beginning) {
    return std::strncmp(text, beginning, std::strlen(beginning)) == 0;
}

int ends_with_colon(const BoundedBuffer &path) {
    return path.view().ends_with(':');
}

// Tells whether a Unix path is also the POSIX path: it is absolute and holds no substitute, "." or empty
// component.
int is_literal(const char *path) {
    const char blank = space_substitute();
    if (path[0] != '/')
        return 0;
    for (const char *c = path; *c; c++)
        if ((*c == '.' && c[1] == '.' && c[2] == '/') || *c == ':' || *c == colon_substitute ||
            *c == shortened_mark || *c == blank ||
            (*c == '/' && (c[1] == '/' || c[1] == '.' || c[1] == '\0')))
            return 0;
    return 1;
}

// Looks a folder up and returns its own name and its parent's id. Returns 0 when there is no such folder.
int folder_entry(std::int16_t volume, std::int32_t *dir_id, std::int32_t *parent, BoundedBuffer &entry_name) {
    unsigned char pascal_name[64] = {};
    CInfoPBRec block = {};
    block.ioNamePtr = pascal_name;
    block.ioVRefNum = volume;
    block.ioFDirIndex = -1;
    block.ioDirID = *dir_id;
    if (PBGetCatNameSync(&block) != noErr)
        return 0;
    from_pascal(pascal_name, entry_name);
    *dir_id = block.ioDirID;
    *parent = block.ioFlParID;
    return 1;
}

// Joins the path of the location's folder, SEPARATOR and the leaf. OUT is empty when the folder is missing or
// the path does not fit. The location of a volume has no folder.
int location_path(const FSSpec *spec, BoundedBuffer &out,
                  int (*folder_path)(std::int16_t, std::int32_t, BoundedBuffer &), const char *separator) {
    BoundedString<256> leaf;
    from_pascal(spec->name, leaf);
    out.clear();
    const int is_volume = spec->parID == 1;
    const int built = (is_volume || folder_path(spec->vRefNum, spec->parID, out)) &&
                      ((is_volume && separator[0] == ':') || out.append(separator)) &&
                      out.append(leaf.view());
    if (!built)
        out.clear();
    return 1;
}

} // namespace

void convert_to_space(char *text) {
    replace(text, space_substitute(), ' ');
}

void convert_space(char *text) {
    replace(text, ' ', space_substitute());
}

int convert_path(const char *src, BoundedBuffer &dst) {
    BoundedString<2048> out;
    if (starts_with(src, "/:")) {
        if (dst.copy(src))
            return 1;
        dst.clear();
        return 0;
    }
    if (starts_with(src, "//")) {
        // Kept on purpose: the third byte is dropped.
        out.copy("/:");
        src += std::strlen(src) > 2 ? 3 : 2;
    } else if (*src == '/') {
        src++;
    }
    if (starts_with(src, "./")) {
        src += 2;
    } else if (starts_with(src, "../")) {
        out.append(":");
        src += 3;
    }
    int fits = 1;
    while (*src && fits) {
        if (*src == '/') {
            if (src[1] != ':')
                fits = out.append(":");
            src++;
        } else if (starts_with(src, "../")) {
            fits = out.append(":");
            src += 3;
        } else {
            const std::size_t run = 1 + std::strcspn(src + 1, "/.");
            fits = out.append({src, run});
            src += run;
        }
    }
    convert_to_space(out.data());
    if (fits && dst.copy(out.view()))
        return 1;
    dst.clear();
    return 0;
}

const char *add_current_dir(BoundedBuffer &dst, const char *path) {
    const int has_colon = std::strchr(path, ':') != nullptr, has_slash = std::strchr(path, '/') != nullptr;
    const char *separator = nullptr; // null when the path stays as it is
    if (curr_dir.empty())
        separator = nullptr;
    else if (*path == ':')
        separator = "";
    else if (starts_with(path, "./")) {
        separator = "";
        path += path[2] == ':' ? 2 : 1;
    } else if (starts_with(path, "../") || (!has_colon && !has_slash))
        separator = "/";
    else if (*path != '/' && has_slash)
        separator = "/";
    const int fits =
        dst.copy(path) && (!separator || (dst.prepend(separator) && dst.prepend(curr_dir.view())));
    if (!fits)
        dst.clear();
    return dst.c_str();
}

int get_macpath_by_dirid(std::int16_t volume, std::int32_t dir_id, BoundedBuffer &out) {
    BoundedString<256> entry_name;
    std::int32_t parent = 0;
    out.clear();
    for (;;) {
        if (!folder_entry(volume, &dir_id, &parent, entry_name) || !out.prepend(":") ||
            !out.prepend(entry_name.view()))
            return 0;
        if (dir_id == 2)
            break;
        dir_id = parent;
    }
    out.cut(out.length() - 1);
    return 1;
}

int get_unixpath_by_dirid(std::int16_t volume, std::int32_t dir_id, BoundedBuffer &out) {
    BoundedString<256> entry_name;
    std::int32_t parent = 0;
    out.clear();
    for (;;) {
        if (!folder_entry(volume, &dir_id, &parent, entry_name) || !out.prepend(entry_name.view()) ||
            !out.prepend("/"))
            return 0;
        if (dir_id == 2)
            break;
        dir_id = parent;
    }
    convert_space(out.data());
    return 1;
}

int FSSpecToMacPath(const FSSpec *spec, BoundedBuffer &out) {
    return location_path(spec, out, get_macpath_by_dirid, ":");
}

int FSSpecToUnixPath(const FSSpec *spec, BoundedBuffer &out) {
    location_path(spec, out, get_unixpath_by_dirid, "/");
    convert_space(out.data());
    return 1;
}

int UnixToFSS(const char *path, const char *leaf, FSSpec *spec) {
    BoundedString<conversion_size> mac_path;
    std::memset(spec, 0, sizeof *spec);
    if (!convert_path(path, mac_path))
        return 0;
    if (leaf ? !mac_path.append(":") || !mac_path.append(leaf)
             : !ends_with_colon(mac_path) && !mac_path.append(":"))
        return 0;
    return FSMakeFSSpec(0, 0, mac_path.c_str(), spec) == noErr;
}

OSErr MacFolderToPosixDir(const char *mac_folder, BoundedBuffer &out) {
    BoundedString<conversion_size> folder;
    FSSpec spec;
    FSRef ref;
    out.clear();
    if (!folder.copy(mac_folder) || (!ends_with_colon(folder) && !folder.append(":")))
        return bdNamErr;
    OSErr error = FSMakeFSSpec(0, 0, folder.c_str(), &spec);
    if (error == noErr)
        error = FSpMakeFSRef(&spec, &ref);
    if (error == noErr)
        error = FSRefMakePath(&ref, out.data(), out.capacity() - 1);
    if (error != noErr)
        out.clear();
    return error;
}

const char *MacFileToPosixFile(const char *mac_path, BoundedBuffer &out) {
    BoundedString<conversion_size> path, folder;
    out.clear();
    if (std::strchr(mac_path, ':')) {
        if (!path.copy(mac_path))
            return out.c_str();
    } else {
        // A name without ":" is a Unix name.
        BoundedString<conversion_size> absolute;
        if (!convert_path(add_current_dir(absolute, mac_path), path))
            return out.c_str();
    }
    const std::size_t colon = path.view().rfind(':');
    if (colon == std::string_view::npos)
        return out.c_str();
    folder.copy(path.view().substr(0, colon + 1));
    BoundedString<conversion_size> posix;
    if (MacFolderToPosixDir(folder.c_str(), posix) != noErr || !HFSPathToPosix(path.c_str(), posix))
        return out.c_str();
    if (path.view().ends_with(':'))
        posix.append("/");
    if (!out.copy(posix.view()))
        out.clear();
    return out.c_str();
}

const char *UnixFileToPosixFile(const char *path, BoundedBuffer &out) {
    BoundedString<conversion_size> mac_path;
    out.clear();
    if (!convert_path(path, mac_path))
        return out.c_str();
    return MacFileToPosixFile(mac_path.c_str(), out);
}

const char *UnixFolderToPosixFolder(const char *path, BoundedBuffer &out) {
    BoundedString<conversion_size> mac_path;
    out.clear();
    if (convert_path(path, mac_path))
        MacFolderToPosixDir(mac_path.c_str(), out);
    return out.c_str();
}

int has_extension(const char *name, const char *extension) {
    return std::string_view(name).ends_with(extension);
}

int file_exists(const char *path) {
    errno = 0;
    if (is_literal(path))
        return PosixFileExists(path);
    BoundedString<conversion_size> mac_path;
    if (!convert_path(path, mac_path))
        return 0;
    return FSFileExists(mac_path.c_str());
}

int access(const char *path, int) {
    if (std::strlen(path) + curr_dir.length() > access_limit) {
        errno = ENAMETOOLONG;
        return -1;
    }
    if (!doAlias && *path == '/')
        return file_exists(path) ? 0 : -1;
    BoundedString<conversion_size> absolute;
    add_current_dir(absolute, path);
    if (!doAlias)
        return file_exists(absolute.c_str()) ? 0 : -1;
    BoundedString<conversion_size> mac_path;
    if (!convert_path(absolute.c_str(), mac_path))
        return -1;
    if (!MyResolve(mac_path))
        return -1;
    if (doDebug)
        ml_printf("\nFound <%s>.\n", absolute.c_str());
    return 0;
}

int CanIWrite(const char *mac_path) {
    FSSpec spec;
    if (FSMakeFSSpec(0, 0, mac_path, &spec) != noErr)
        return 1;
    CInfoPBRec block = {};
    block.ioNamePtr = spec.name;
    block.ioVRefNum = spec.vRefNum;
    block.ioDirID = spec.parID;
    if (PBHGetFInfoSync(&block) != noErr)
        return 1;
    return (block.ioFlAttrib & kioFlAttribFileOpen) == 0;
}

int UnixPathToFolder(const char *path, FSSpec *spec) {
    BoundedString<conversion_size> mac_path;
    std::memset(spec, 0, sizeof *spec);
    if (!convert_path(path, mac_path) || !mac_path.append(":"))
        return 0;
    std::int32_t dir_id;
    return FSMakeFSSpec(0, 0, mac_path.c_str(), spec) == noErr && folder_id(spec, &dir_id);
}

int folder_id(const FSSpec *spec, std::int32_t *dir_id) {
    CInfoPBRec block = {};
    unsigned char leaf[64];
    std::memcpy(leaf, spec->name, sizeof leaf);
    block.ioNamePtr = leaf;
    block.ioVRefNum = spec->vRefNum;
    // The location of a volume stands for the volume's root folder.
    block.ioFDirIndex = spec->parID == 1 ? -1 : 0;
    block.ioDirID = spec->parID == 1 ? 2 : spec->parID;
    if (PBGetCatNameSync(&block) != noErr || (block.ioFlAttrib & kioFlAttribDir) == 0)
        return 0;
    *dir_id = block.ioDirID;
    return 1;
}

int mydir_p(const char *src, BoundedBuffer &dst) {
    if (!dst.copy(src))
        dst.clear();
    return 1;
}

void simplify_directory(BoundedBuffer &path) {
    BoundedString<conversion_size> mac_path, simple;
    FSSpec spec;
    if (path.length() > 255 || !convert_path(path.c_str(), mac_path))
        return;
    const OSErr error = FSMakeFSSpec(0, 0, mac_path.c_str(), &spec);
    if (error != noErr && error != fnfErr)
        return;
    FSSpecToUnixPath(&spec, simple);
    if (!simple.empty() && simple.length() <= path.length())
        path.copy(simple.view());
}

const char *SetTilde() {
    static BoundedString<256> folder;
    const auto cut_component = [](BoundedBuffer &path) {
        const std::size_t slash = path.view().rfind('/');
        if (slash != std::string_view::npos)
            path.cut(slash);
    };
    BoundedString<conversion_size> path;
    if (!get_unixpath_by_dirid(appvol, appdir, path))
        return nullptr;
    cut_component(path);
    contentsFolder.copy(path.view());
    cut_component(path);
    cut_component(path);
    if (!folder.copy(path.view()))
        return nullptr;
    shortroot.copy(folder.view());
    cut_component(shortroot);
    if (doDebug) {
        ml_printf("Application directory:\n<%s>\n", folder.c_str());
        ml_printf("Database directory:\n<%s>\n", haveosx ? supportFolder.c_str() : prefsFolder.c_str());
    }
    return folder.c_str();
}

void SetSystemFontPath() {
    std::int16_t volume;
    std::int32_t dir_id;
    if (FindFolder(four("font"), 0, &volume, &dir_id) != noErr ||
        !get_unixpath_by_dirid(volume, dir_id, SYSTEMFONTPATH))
        SYSTEMFONTPATH.clear();
}

char *mygetenv(const char *name) {
    return myget_string(name);
}

int chdir(const char *) {
    return 0;
}

int is_long_name(const char *name) {
    // Kept on purpose: longer names are refused, as the earliest file systems would.
    constexpr int most_characters = 29;
    int count = 0;
    for (; *name; name++)
        if ((static_cast<unsigned char>(*name) & 0xC0) != 0x80)
            count++;
    return count > most_characters;
}

int split_path(const char *path, BoundedBuffer &folder, BoundedBuffer &leaf) {
    const std::string_view whole = path;
    const std::size_t slash = whole.rfind('/');
    folder.clear();
    if (slash == std::string_view::npos)
        return leaf.copy(whole);
    return folder.copy(whole.substr(0, slash)) && leaf.copy(whole.substr(slash + 1));
}

} // namespace quillon
