// Lists the folders below a folder, for search-path elements that end with "//".
#include <cstdlib>
#include <cstring>

#include "console/output.h"
#include "files/paths.h"
#include "files/search.h"
#include "kpath/search_paths.h"
#include "kpath/utilities.h"
#include "state/job_state.h"
#include "toolbox/files.h"

namespace quillon {

namespace {

// The folders that aliases have led to so far. Such a folder is walked once: a second walk would repeat its
// folders, and with many aliases would never end.
struct Targets {
    struct Target {
        std::int16_t volume;
        std::int32_t id;
    } * all;
    std::size_t count;
};

// The list that is being filled, and the path of the folder that is being walked, which ends with "/".
struct Expansion {
    char ***list;
    std::size_t *count;
    Targets *targets;
    BoundedString<1024> path;
};

// A folder on the way down to the one being walked. An alias that leads back to one of these is not followed.
struct Ancestor {
    std::int16_t volume;
    std::int32_t id;
    const Ancestor *above;
};

void expand_folder(Expansion &expansion, const Ancestor &folder);

int is_ancestor(const Ancestor *ancestor, std::int16_t volume, std::int32_t id) {
    for (; ancestor; ancestor = ancestor->above)
        if (ancestor->volume == volume && ancestor->id == id)
            return 1;
    return 0;
}

// Adds a folder to the targets. Returns 1 when it is new among them, else 0.
int add_target(Targets *targets, std::int16_t volume, std::int32_t id) {
    for (std::size_t i = 0; i < targets->count; i++)
        if (targets->all[i].volume == volume && targets->all[i].id == id)
            return 0;
    targets->all =
        static_cast<Targets::Target *>(xrealloc(targets->all, (targets->count + 1) * sizeof *targets->all));
    targets->all[targets->count++] = {volume, id};
    return 1;
}

void expand_subfolder(Expansion &expansion, const Ancestor &folder, const unsigned char *pascal_name,
                      std::int32_t id) {
    const std::size_t length = expansion.path.length();
    BoundedString<256> name;
    from_pascal(pascal_name, name);
    convert_space(name.data());
    if (!expansion.path.append(name.view()) || !expansion.path.append("/")) {
        ml_printf("The path of folder <%s%s> is too long.\n", expansion.path.c_str(), name.c_str());
    } else {
        add_directory(expansion.list, expansion.count, expansion.path.c_str());
        expand_folder(expansion, {folder.volume, id, &folder});
    }
    expansion.path.cut(length);
}

void expand_alias(Expansion &expansion, const Ancestor &folder, const unsigned char *pascal_name) {
    FSSpec spec = {};
    std::int32_t id;
    int is_folder, was_aliased;
    spec.vRefNum = folder.volume;
    spec.parID = folder.id;
    std::memcpy(spec.name, pascal_name, sizeof spec.name);
    if (ResolveAliasFile(&spec, 1, &is_folder, &was_aliased) != noErr || !is_folder ||
        !folder_id(&spec, &id) || is_ancestor(&folder, spec.vRefNum, id))
        return;
    Expansion target{expansion.list, expansion.count, expansion.targets, {}};
    FSSpecToUnixPath(&spec, target.path);
    if (target.path.empty() || !target.path.append("/"))
        return;
    add_directory(target.list, target.count, target.path.c_str());
    if (add_target(target.targets, spec.vRefNum, id))
        expand_folder(target, {spec.vRefNum, id, &folder});
}

void expand_folder(Expansion &expansion, const Ancestor &folder) {
    unsigned char name[64];
    CInfoPBRec block = {};
    for (std::int32_t index = 1;; index++) {
        block.ioNamePtr = name;
        block.ioVRefNum = folder.volume;
        block.ioDirID = folder.id;
        block.ioFDirIndex = index;
        if (PBGetCatNameSync(&block) != noErr)
            return;
        if (block.ioFlAttrib & kioFlAttribDir)
            expand_subfolder(expansion, folder, name, block.ioDirID);
        else if (doAlias && (block.ioFlFndrInfo.fdFlags & kIsAlias))
            expand_alias(expansion, folder, name);
    }
}

} // namespace

void mac_expand_subdir(char ***list, std::size_t *count, const char *folder) {
    Targets targets = {};
    Expansion expansion{list, count, &targets, {}};
    FSSpec spec;
    std::int32_t id;
    if (folder[0] == '.') {
        if (doDebug)
            ml_printf("\nUnable to search subdirectories of <%s>\n", folder);
        return;
    }
    if (!expansion.path.copy(folder) ||
        (!expansion.path.view().ends_with('/') && !expansion.path.append("/"))) {
        ml_printf("The path of folder <%s> is too long.\n", folder);
        return;
    }
    BoundedString<1024> bare;
    bare.copy(expansion.path.view().substr(0, expansion.path.length() - 1));
    if (UnixPathToFolder(bare.c_str(), &spec) && folder_id(&spec, &id))
        expand_folder(expansion, {spec.vRefNum, id, nullptr});
    std::free(targets.all);
}

} // namespace quillon
