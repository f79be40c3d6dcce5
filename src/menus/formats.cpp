#include "menus/formats.h"

#include <cstdio>
#include <cstring>

#include "console/output.h"
#include "core/command_table.h"
#include "files/paths.h"
#include "files/streams.h"
#include "kpath/search_paths.h"
#include "menus/menus.h"
#include "settings/settings.h"
#include "state/job_state.h"
#include "toolbox/files.h"

namespace quillon {

static const char *format_key() {
    return useETeX ? "PDFETEXFORMAT" : "PDFTEXFORMAT";
}

static OSType format_creator() {
    return useETeX ? four("qXET") : four("QXET");
}

// Cuts the extension off the name of a format file. Returns 0 for any other file.
static int format_stem(BoundedBuffer &name) {
    const std::size_t dot = name.view().find_last_of('.');
    if (dot == std::string_view::npos)
        return 0;
    const std::string_view extension = name.view().substr(dot);
    if (extension != ".fmt" && extension != ".efmt")
        return 0;
    name.cut(dot);
    return 1;
}

static void list_formats(std::int16_t volume, std::int32_t folder) {
    unsigned char leaf[64];
    BoundedString<256> stem;
    for (std::int16_t index = 1; index > 0; index++) {
        CInfoPBRec file = {};
        leaf[0] = 0;
        file.ioNamePtr = leaf;
        file.ioVRefNum = volume;
        file.ioDirID = folder;
        file.ioFDirIndex = index;
        if (PBHGetFInfoSync(&file) != noErr)
            return;
        from_pascal(leaf, stem);
        if (format_stem(stem) && file.ioFlFndrInfo.fdCreator == format_creator())
            AppendMenuItemText(formatMenu, stem.c_str());
    }
}

// Lists the formats of one folder of the search path (a Unix path, which may end with "/").
static void list_folder(const char *entry) {
    BoundedString<1024> path, hfs_path;
    FSSpec spec = {};
    if (!path.copy(entry)) {
        const std::size_t length = std::strlen(entry);
        ml_printf("I can't find the TeX formats folder <%.*s>.\n",
                  static_cast<int>(entry[length - 1] == '/' ? length - 1 : length), entry);
        return;
    }
    if (has_extension(path.c_str(), "/"))
        path.cut(path.length() - 1);
    convert_path(path.c_str(), hfs_path);
    FSMakeFSSpec(0, 0, hfs_path.c_str(), &spec);
    CInfoPBRec folder = {};
    folder.ioNamePtr = spec.name;
    folder.ioVRefNum = spec.vRefNum;
    folder.ioDirID = spec.parID;
    if (PBGetCatInfoSync(&folder) != noErr || !(folder.ioFlAttrib & kioFlAttribDir)) {
        ml_printf("I can't find the TeX formats folder <%s>.\n", path.c_str());
        return;
    }
    if (format_folder.empty())
        format_folder.copy(path.view());
    list_formats(spec.vRefNum, folder.ioDirID);
}

void SetFormatMenu() {
    empty_menu(formatMenu);
    char **const list = search_list(slot_texformats);
    for (int i = 0; list && list[i]; i++)
        if (std::strcmp(list[i], "./") != 0)
            list_folder(list[i]);
    if (CountMenuItems(formatMenu) > 0)
        return;
    ml_printf("I can't find any formats.\n");
    ml_printf("Check your TEXFORMATS search path or build\n");
    ml_printf("a format file using the \"Build format\" command\n");
    ml_printf("under the \"File\" Menu.\n");
    format_name.clear();
}

void SetDefaultFormat() {
    BoundedString<256> text;
    const char *const value = get_str_resource(format_key());
    format_name.clear();
    if (!value)
        return;
    for (std::int16_t item = 1; item <= CountMenuItems(formatMenu); item++) {
        GetMenuItemText(formatMenu, item, text);
        if (text == value) {
            format_name.copy(value);
            CheckMenuItem(formatMenu, item, 1);
            return;
        }
    }
}

void DoFormat(std::int16_t item) {
    BoundedString<256> text;
    GetMenuItemText(formatMenu, item, text);
    set_str_resource(format_key(), text.c_str());
    format_name.copy(text.view());
    for (std::int16_t i = 1; i <= CountMenuItems(formatMenu); i++)
        CheckMenuItem(formatMenu, i, 0);
    CheckMenuItem(formatMenu, item, 1);
}

void ShowResourceText(const char *name) {
    BoundedString<1024> path, hfs_path;
    FSSpec spec = {};
    path.format("%s/Resources/%s", contentsFolder.c_str(), name);
    convert_path(path.c_str(), hfs_path);
    if (FSMakeFSSpec(0, 0, hfs_path.c_str(), &spec) != noErr)
        ml_printf("I can't open Info file\n");
    ReadInfoFile(&spec);
}

void info(std::int16_t item) {
    static const char *const names[] = {"dvips_info", "makeindex_info", "metapost_info", "pdftex_info"};
    if (item >= info_dvips && item <= info_pdftex)
        ShowResourceText(names[item - info_dvips]);
}

// Reads the first line of FILE, at most 248 bytes. Returns 0 for an empty file.
static int read_first_line(std::FILE *file, BoundedBuffer &line) {
    line.clear();
    int character = 0;
    int count = 0;
    while (count < 248 && (character = std::fgetc(file)) != EOF && character != '\n' && character != '\r') {
        const char byte = static_cast<char>(character);
        line.append({&byte, 1});
        count++;
    }
    return count > 0 || character != EOF;
}

const char *GetFormatFromFile(const char *path, BoundedBuffer &out) {
    BoundedString<256> line;
    out.clear();
    std::FILE *const file = myfopen(path, "r");
    if (!file)
        return nullptr;
    const int any = read_first_line(file, line);
    std::fclose(file);
    if (!any || line.length() < 2)
        return nullptr;
    if (line.c_str()[1] == '&')
        return out.copy(line.c_str() + 2) ? out.c_str() : nullptr;
    const char *place = line.c_str() + 1;
    place += std::strspn(place, " ");
    if (std::strncmp(place, "format", 6) != 0 || !(place = std::strchr(line.c_str(), '=')))
        return nullptr;
    place++;
    place += std::strspn(place, " ");
    return *place && out.copy(place) ? out.c_str() : nullptr;
}

} // namespace quillon
