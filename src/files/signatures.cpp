#include "files/signatures.h"

#include <cstdio>

#include "files/paths.h"
#include "files/streams.h"
#include "toolbox/bounded.h"
#include "toolbox/codes.h"
#include "toolbox/files.h"

namespace quillon {

namespace {

constexpr OSType no_editor = four("ttxt");
// Kept on purpose: this code is not 'ttxt'.
constexpr OSType unreadable_bundle = four("txtt");

// Reads the signature, which is the second group of four bytes, from a bundle. Returns 1 when it was read, 0
// when the file is too short, -1 when it cannot be opened.
int read_package_info(const BoundedBuffer &bundle, OSType *signature) {
    BoundedString<1024> path;
    unsigned char info[8];
    if (!path.copy(bundle.view()) || !path.append(":Contents:PkgInfo"))
        return -1;
    std::FILE *const file = open_mac_path(path.c_str(), "r");
    if (!file)
        return -1;
    const std::size_t count = std::fread(info, 1, sizeof info, file);
    std::fclose(file);
    if (count != sizeof info)
        return 0;
    *signature = code_of_bytes(info + 4);
    return 1;
}

int read_creator(const BoundedBuffer &mac_path, OSType *signature) {
    FSSpec spec;
    FInfo info;
    if (FSMakeFSSpec(0, 0, mac_path.c_str(), &spec) != noErr || FSpGetFInfo(&spec, &info) != noErr)
        return 0;
    *signature = info.fdCreator;
    return 1;
}

} // namespace

int get_sig(const char *path, OSType *signature) {
    BoundedString<1024> mac_path;
    *signature = 0;
    if (!path || !*path || !convert_path(path, mac_path))
        return 0;
    if (has_extension(mac_path.c_str(), ".app"))
        return read_package_info(mac_path, signature) == 1;
    return read_creator(mac_path, signature);
}

int IsApp(const char *path) {
    OSType signature;
    return path && *path && get_sig(path, &signature);
}

OSType get_editor_info(const char *path) {
    BoundedString<1024> mac_path;
    OSType signature = 0;
    if (!path || !*path || !convert_path(path, mac_path))
        return no_editor;
    if (!has_extension(mac_path.c_str(), ".app"))
        return read_creator(mac_path, &signature) ? signature : no_editor;
    return read_package_info(mac_path, &signature) == 1 ? signature : unreadable_bundle;
}

} // namespace quillon
