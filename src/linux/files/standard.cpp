// The standard folders of this host.
#include <cerrno>

#include "common/host_files.h"
#include "common/places.h"
#include "linux/files/host.h"

namespace quillon {

namespace {

std::string fonts_folder() {
    const char *const system_fonts = "/usr/share/fonts";
    return common::is_folder(system_fonts) ? system_fonts : common::data_folder() + "/fonts";
}

} // namespace

OSErr FindFolder(OSType kind, int create, std::int16_t *vref, std::int32_t *dir_id) {
    std::string path, normal, name;
    *vref = 0;
    *dir_id = 0;
    if (kind == four("pref"))
        path = common::config_folder();
    else if (kind == four("asup"))
        path = common::data_folder();
    else if (kind == four("temp"))
        path = common::temporary_folder();
    else if (kind == four("trns"))
        path = common::transcripts_folder();
    else if (kind == four("font"))
        path = fonts_folder();
    if (!NormalPath(path, normal))
        return fnfErr;
    if (create && !common::make_folders(normal, 0700))
        return ErrorCode(errno ? errno : ENOENT);
    if (!common::is_folder(normal))
        return fnfErr;
    if (kind == four("temp") && !common::make_private_folder(normal))
        return permErr;
    FSSpec inside;
    const OSErr error = LocationOf(normal + "/.", &inside);
    if (error != noErr && error != fnfErr)
        return error;
    *vref = inside.vRefNum;
    *dir_id = inside.parID;
    return noErr;
}

} // namespace quillon
